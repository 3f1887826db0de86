#pragma once

#include <csignal>
#include <sys/resource.h>

namespace TestSupport {

/// While it lives, no file of this process may grow beyond so many bytes: the system refuses the
/// write as on a full disk, with "File too large".
class FullDisk {
public:
    explicit FullDisk(rlim_t bytes)
    {
        std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &before);
        const rlimit small = {bytes, before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &small);
    }
    ~FullDisk() { setrlimit(RLIMIT_FSIZE, &before); }
    FullDisk(const FullDisk &) = delete;
    FullDisk &operator=(const FullDisk &) = delete;

private:
    rlimit before = {};
};

} // namespace TestSupport
