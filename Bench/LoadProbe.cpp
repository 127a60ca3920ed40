// Loads a library and tells what that took: milliseconds, further threads, further open files.
#include <chrono>
#include <cstdio>
#include <dlfcn.h>
#include <filesystem>
#include <iterator>

namespace {

int EntriesOf(const char* folder) {
    const std::filesystem::directory_iterator entries(folder);
    return static_cast<int>(std::distance(begin(entries), end(entries)));
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2)
        return 2;
    const int threads = EntriesOf("/proc/self/task");
    const int files = EntriesOf("/proc/self/fd");
    const auto before = std::chrono::steady_clock::now();
    const void* library = dlopen(argv[1], RTLD_NOW);
    const std::chrono::duration<double, std::milli> time = std::chrono::steady_clock::now() - before;
    if (library == nullptr) {
        std::fprintf(stderr, "%s\n", dlerror());
        return 1;
    }
    std::printf("%.3f %d %d\n", time.count(), EntriesOf("/proc/self/task") - threads,
                EntriesOf("/proc/self/fd") - files);
    return 0;
}
