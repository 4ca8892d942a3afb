# The repositories of the stand-in's shared browser games that are cloned rather than
# hosted, made with the real git so Install in scripts/run clones them from a loopback
# `git http-backend` (tests/support/git-http-server.py) as it would from GitHub. Source it;
# demo_repositories ROOT makes ROOT/<owner>/<repo>.git afresh, each a small canvas game
# with its corvandell.txt.

demo_repository() {
    local root=$1 owner=$2 repo=$3 name=$4 launch=$5 colour=$6
    local work="$root/.work/$owner-$repo"
    rm -rf "$work" "$root/$owner/$repo.git"
    mkdir -p "$work/$(dirname "$launch")" "$root/$owner"
    printf 'name=%s\nlaunch=%s\n' "$name" "$launch" >"$work/corvandell.txt"
    cat >"$work/$launch" <<HTML
<!doctype html>
<html><head><meta charset="utf-8"><title>$name</title></head>
<body style="margin:0;background:#111">
<canvas id="game" width="640" height="480"></canvas>
<script>
const context = document.getElementById("game").getContext("2d");
let x = 0;
function frame() {
    context.fillStyle = "#111"; context.fillRect(0, 0, 640, 480);
    context.fillStyle = "$colour"; context.fillRect(x, 220, 40, 40);
    context.fillStyle = "#eee"; context.font = "24px sans-serif"; context.fillText("$name", 20, 40);
    x = (x + 3) % 640; requestAnimationFrame(frame);
}
frame();
</script></body></html>
HTML
    (
        cd "$work"
        export GIT_CONFIG_NOSYSTEM=1 HOME="$root/.work" GIT_AUTHOR_NAME=Demo GIT_AUTHOR_EMAIL=demo@corvandell.test \
            GIT_COMMITTER_NAME=Demo GIT_COMMITTER_EMAIL=demo@corvandell.test
        git init -q -b main . && git add -A && git commit -q -m "$name"
        git clone -q --bare . "$root/$owner/$repo.git"
    )
}

demo_repositories() {
    local root=$1
    demo_repository "$root" alice-codes tiny-tower "Tiny Tower Defense" index.html '#e8563f'
    demo_repository "$root" pixel-forge orbit-hop "Orbit Hop" game/play.html '#4fa3e8'
    rm -rf "$root/.work"
}
