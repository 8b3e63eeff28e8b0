#include "outfile.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <random>

#ifdef _WIN32
#include <fcntl.h>
#include <io.h>
#include <process.h>
#include <sys/stat.h>
#include <windows.h>
#else
#include <fcntl.h>
#include <unistd.h>
#endif

namespace zanpx {
namespace {

namespace fs = std::filesystem;

// The temporary file being written, for the signal handler: a fixed buffer,
// since a handler may not allocate.
char pending[4096];
volatile std::sig_atomic_t havePending = 0;

extern "C" void removePendingAndDie(int sig) {
    if (havePending) {
#ifdef _WIN32
        _unlink(pending);
#else
        unlink(pending);
#endif
    }
    // Ends the way the signal would have ended the program: at once, not after this handler.
    std::signal(sig, SIG_DFL);
#ifndef _WIN32
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, sig);
    sigprocmask(SIG_UNBLOCK, &set, nullptr);
#endif
    std::raise(sig);
}

void watchSignals() {
    static bool watching = false;
    if (watching) return;
    watching = true;
    std::signal(SIGINT, removePendingAndDie);
    std::signal(SIGTERM, removePendingAndDie);
#ifdef SIGHUP
    std::signal(SIGHUP, removePendingAndDie);
#endif
}

// Creates a file that did not exist; -1 when the name is taken or the folder refuses.
int createNew(const std::string& name) {
#ifdef _WIN32
    return _open(name.c_str(), _O_WRONLY | _O_CREAT | _O_EXCL | _O_BINARY, _S_IREAD | _S_IWRITE);
#else
    return open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);  // the umask applies as usual
#endif
}

bool writeAll(int fd, const Bytes& b) {
    const char* p = static_cast<const char*>(b.data);
    for (size_t left = b.size; left > 0;) {
        const unsigned chunk = left > (1u << 30) ? 1u << 30 : unsigned(left);
#ifdef _WIN32
        int n = _write(fd, p, chunk);
#else
        ssize_t n = write(fd, p, chunk);
#endif
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return false;
        p += n;
        left -= size_t(n);
    }
    return true;
}

int closeFile(int fd) {
#ifdef _WIN32
    return _close(fd);
#else
    return close(fd);
#endif
}

bool replace(const std::string& from, const std::string& to) {
#ifdef _WIN32
    return MoveFileExA(from.c_str(), to.c_str(), MOVEFILE_REPLACE_EXISTING) != 0;
#else
    return std::rename(from.c_str(), to.c_str()) == 0;
#endif
}

int processId() {
#ifdef _WIN32
    return _getpid();
#else
    return int(getpid());
#endif
}

void forget(const std::string& tmp) {
    havePending = 0;
    std::remove(tmp.c_str());
}

}  // namespace

bool isFolder(const std::string& path) {
    std::error_code ec;
    return fs::is_directory(fs::path(path), ec);
}

bool writeWhole(const std::string& path, std::initializer_list<Bytes> parts, std::string& error) {
    if (isFolder(path)) {
        error = path + " is a folder, not a file";
        return false;
    }
    const fs::path target(path);
    const fs::path folder = target.has_parent_path() ? target.parent_path() : fs::path(".");
    watchSignals();
    std::random_device seed;
    std::string tmp;
    int fd = -1;
    for (int attempt = 0; attempt < 50 && fd < 0; ++attempt) {
        tmp = (folder / ("." + target.filename().string() + "." + std::to_string(processId()) + "-" +
                         std::to_string(seed() % 1000000) + ".part"))
                  .string();
        if (tmp.size() >= sizeof pending) break;
        havePending = 0;
        std::memcpy(pending, tmp.c_str(), tmp.size() + 1);
        havePending = 1;
        fd = createNew(tmp);
        if (fd < 0 && errno != EEXIST) break;
    }
    if (fd < 0) {
        havePending = 0;
        error = "cannot write " + path + ": " + std::strerror(errno);
        return false;
    }
    bool ok = true;
    for (const Bytes& b : parts) ok = ok && writeAll(fd, b);
    int e = ok ? 0 : errno;
    if (closeFile(fd) != 0 && ok) ok = false, e = errno;
    if (!ok) {
        forget(tmp);
        error = "cannot write " + path + ": " + std::strerror(e ? e : EIO);
        return false;
    }
    if (!replace(tmp, path)) {
        e = errno;
        forget(tmp);
        error = "cannot write " + path + ": " + std::strerror(e);
        return false;
    }
    havePending = 0;
    return true;
}

}  // namespace zanpx
