// Loads shared libraries, one after the other, and does nothing with them.
#include <dlfcn.h>

#include <iostream>

int main(int argc, char** argv) {
    for (int i = 1; i < argc; ++i) {
        if (dlopen(argv[i], RTLD_NOW | RTLD_LOCAL) == nullptr) {
            std::cerr << dlerror() << '\n';
            return 1;
        }
    }
    std::cout << "loaded " << argc - 1 << '\n';
}
