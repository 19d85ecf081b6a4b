/* The shared library loads with dlopen after start-up, as from a scripting
 * language: its logging path's thread-locals then take room in the C
 * library's static TLS reserve, which must suffice. */
#include <dlfcn.h>
#include <stdio.h>

int main(int argc, char **argv) {
    if (argc != 2) {
        fprintf(stderr, "usage: %s <libvexar.so>\n", argv[0]);
        return 2;
    }
    void *library = dlopen(argv[1], RTLD_NOW | RTLD_LOCAL);
    if (library == NULL) {
        fprintf(stderr, "dlopen: %s\n", dlerror());
        return 1;
    }
    int found = dlsym(library, "QTV_VX_Vexar_getInstance") != NULL;
    dlclose(library);
    return found ? 0 : 1;
}
