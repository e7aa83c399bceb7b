// Runs one program and reports what that process alone cost: wall time, peak
// resident memory and CPU time, as "key=value" words on standard output.
//
// The benchmark does not spawn the measured program itself: on exec, Linux
// folds the peak memory of the address space being replaced into the
// process's ru_maxrss, so a child vforked from the (large) benchmark would
// report the benchmark's peak. This launcher is small and forks a private
// copy of itself, so the figure is the measured program's own.

#include <cstdio>
#include <ctime>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {
long long microseconds(const timespec &t)
{
    return static_cast<long long>(t.tv_sec) * 1000000 + t.tv_nsec / 1000;
}

long long microseconds(const timeval &t)
{
    return static_cast<long long>(t.tv_sec) * 1000000 + t.tv_usec;
}
} // namespace

int main(int argc, char *argv[])
{
    if (argc < 2) {
        std::fprintf(stderr, "usage: %s PROGRAM [ARGUMENT...]\n", argv[0]);
        return 2;
    }
    timespec start{};
    clock_gettime(CLOCK_MONOTONIC, &start);
    const pid_t pid = fork();
    if (pid < 0) {
        std::perror("fork");
        return 2;
    }
    if (pid == 0) {
        // The program's own output is not what is measured.
        const int null = open("/dev/null", O_WRONLY);
        dup2(null, STDOUT_FILENO);
        dup2(null, STDERR_FILENO);
        execv(argv[1], argv + 1);
        _exit(127);
    }
    int status = 0;
    rusage usage{};
    if (wait4(pid, &status, 0, &usage) < 0) {
        std::perror("wait4");
        return 2;
    }
    timespec end{};
    clock_gettime(CLOCK_MONOTONIC, &end);
    std::printf("wall_us=%lld maxrss_kib=%ld cpu_us=%lld exit=%d\n", microseconds(end) - microseconds(start),
        usage.ru_maxrss, microseconds(usage.ru_utime) + microseconds(usage.ru_stime),
        WIFEXITED(status) ? WEXITSTATUS(status) : -1);
    return 0;
}
