#include "bench/support/ProcessMeter.h"

#include <cstring>
#include <ctime>
#include <fstream>
#include <string>
#include <sys/resource.h>

namespace ostrel {

namespace {

double usage(int who) {
    rusage used{};
    getrusage(who, &used);
    const auto seconds = [](const timeval& t) { return double(t.tv_sec) + double(t.tv_usec) / 1e6; };
    return seconds(used.ru_utime) + seconds(used.ru_stime);
}

/// The bytes of a field of /proc/self/status, which the kernel gives in kB (proc(5)).
double statusBytes(const char* field) {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.rfind(field, 0) == 0) return std::stod(line.substr(std::strlen(field) + 1)) * 1024;
    }
    return 0;
}

}  // namespace

double threadSeconds() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9;
}

double processSeconds() { return usage(RUSAGE_SELF); }
double childrenSeconds() { return usage(RUSAGE_CHILDREN); }
double residentBytes() { return statusBytes("VmRSS:"); }
double peakBytes() { return statusBytes("VmHWM:"); }

void forgetPeak() { std::ofstream("/proc/self/clear_refs") << "5"; }

}  // namespace ostrel
