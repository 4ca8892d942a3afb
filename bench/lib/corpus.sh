# The git benchmarks' corpora: deterministic web-game repositories made once with the real
# git and kept in the benchmark's build folder. Source it; it defines functions only.

corpus_data_version=2

# make_corpus ROOT BUILD NAME: makes (once) BUILD/data-NAME with repo/ (the history),
# clone/ (a depth-1 clone over file://, so upload-pack wrote its pack) and full.pack.
make_corpus() {
    local root=$1 build=$2 corpus=$3
    local data=$build/data-$corpus
    [ -f "$data/ready-$corpus_data_version" ] && return 0
    rm -rf "$data"
    mkdir -p "$data/repo"
    echo "Making the $corpus benchmark repository..."
    local flag=
    [ "$corpus" = large ] && flag=--large
    python3 "$root/bench/make_game_repo.py" $flag "$data/repo"
    git clone -q --depth 1 --no-local "file://$data/repo" "$data/clone"
    git -C "$data/repo" pack-objects -q --revs --all --stdout </dev/null >"$data/full.pack"
    touch "$data/ready-$corpus_data_version"
}
