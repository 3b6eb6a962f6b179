// No row is plain: every line goes the general way.
#include "abaqus/abqrows.h"

bool TakeNodeRow(LineSource *, int *, double *, double *, double *) {
    return false;
}

bool TakeElementRow(LineSource *, int, int *) {
    return false;
}

int TakeSetRow(LineSource *, int, int *) {
    return -1;
}
