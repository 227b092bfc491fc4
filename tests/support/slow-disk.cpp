// Loaded before the C library, makes each synchronisation of a file take MAROVENDA_DISK_DELAY milliseconds longer,
// and notes it in the file MAROVENDA_DISK_LOG: "main" if the main thread waits for it, or "other".

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <thread>
#include <unistd.h>

namespace {

void delay()
{
    if (const char *const path = std::getenv("MAROVENDA_DISK_LOG")) {
        const char *const line = gettid() == getpid() ? "main\n" : "other\n";
        const int log = open(path, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
        if (write(log, line, std::strlen(line)) < 0)
            std::abort();
        close(log);
    }
    const char *const milliseconds = std::getenv("MAROVENDA_DISK_DELAY");
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds ? std::atoi(milliseconds) : 0));
}

int slow(const char *function, int file)
{
    delay();
    return reinterpret_cast<int (*)(int)>(dlsym(RTLD_NEXT, function))(file);
}

} // namespace

// NOLINTBEGIN(readability-inconsistent-declaration-parameter-name)
extern "C" {

int fsync(int file) { return slow("fsync", file); }
int fdatasync(int file) { return slow("fdatasync", file); }

} // extern "C"
// NOLINTEND(readability-inconsistent-declaration-parameter-name)
