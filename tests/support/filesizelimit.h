#pragma once
// Header-only, so that the core tests can use it without the windows' support library.
#include <csignal>
#include <sys/resource.h>

// While it lives, no file may grow past `bytes`: writes beyond fail with EFBIG,
// as on a full disk, even for root.
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes)
    {
        std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &limit_);
        previous_ = limit_.rlim_cur;
        limit_.rlim_cur = bytes;
        setrlimit(RLIMIT_FSIZE, &limit_);
    }
    ~FileSizeLimit()
    {
        limit_.rlim_cur = previous_;
        setrlimit(RLIMIT_FSIZE, &limit_);
    }
    FileSizeLimit(const FileSizeLimit &) = delete;
    FileSizeLimit &operator=(const FileSizeLimit &) = delete;

private:
    rlimit limit_{};
    rlim_t previous_ = 0;
};
