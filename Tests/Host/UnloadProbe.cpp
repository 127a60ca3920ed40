/// Loads the dataset library as an add-in, uses it, unloads it, and prints what became of the factory pointer at each
/// step. The pointer itself stands in this program: the library's own name for it binds to the program's, so that it
/// can still be read when the library is gone.
#include <dlfcn.h>

#include <cstdio>

extern "C" {
/// The pointer under the name that the library knows it by.
__attribute__((visibility("default"))) void* g_factory __asm__("_ZN4tolm19ITolmDataSetFactory10m_pFactoryE") = nullptr;
}

namespace {

using EntryPoint = void (*)();

void Report(const char* step) {
    std::printf("%s: %s\n", step, g_factory != nullptr ? "factory" : "none");
}

bool Call(void* library, const char* name) {
    void* const symbol = dlsym(library, name);
    if (symbol == nullptr)
        return false;
    reinterpret_cast<EntryPoint>(symbol)();
    return true;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2)
        return 2;
    Report("before");
    void* const library = dlopen(argv[1], RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) {
        std::puts(dlerror());
        return 1;
    }
    Report("loaded");
    if (!Call(library, "InitializeAddin"))
        return 1;
    Report("initialised");
    if (!Call(library, "UnInitializeAddin"))
        return 1;
    Report("uninitialised");
    dlclose(library);
    Report("closed");
    std::printf("library: %s\n", dlopen(argv[1], RTLD_NOW | RTLD_NOLOAD) != nullptr ? "still loaded" : "gone");
    return 0;
}
