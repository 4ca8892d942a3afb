// Which library refresh the window is waiting for. A refresh started while another runs
// supersedes it: the older job still ends and posts its result, but that result is dropped,
// so an older library never replaces a newer one, whatever order the answers arrive in.
#pragma once

namespace corvandell {

class RefreshSequence {
public:
    // Numbers the refresh about to start; its result carries the number back.
    unsigned long begin() noexcept { return ++latest_; }
    bool isCurrent(unsigned long generation) const noexcept { return generation == latest_; }

private:
    unsigned long latest_ = 0;
};

} // namespace corvandell
