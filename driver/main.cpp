// The program's entry.
#include "driver/KIVOm.h"

int main(int argc, char **argv) {
    return RunKIVOM(argc, argv);
}
