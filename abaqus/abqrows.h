// Data lines in the spelling that nearly every exporter writes, read straight from the block they lie in.
//
// Each function takes one row when the next line is of the plain form, numbers separated by commas with blanks
// around them, and lies whole in the block. In every other case (comments, signs or exponents out of the
// ordinary, blanks inside a number, a comma too many, the end of the block, no stream) it takes nothing, and the line
// goes the general way: compressed, joined, scanned field by field. The two ways never differ in what they read.
#ifndef KIVOM_ABAQUS_ABQROWS_H
#define KIVOM_ABAQUS_ABQROWS_H

#include "support/lines.h"

// A node's number and two or three coordinates (z is 0 where there are two).
bool TakeNodeRow(LineSource *stream, int *number, double *x, double *y, double *z);

// `count` whole numbers into numbers[0..count-1]. A line that ends in a comma goes on in the next one.
bool TakeElementRow(LineSource *stream, int count, int *numbers);

// All whole numbers of a line, at most `room`: their count, or -1 when the line must go the general way.
int TakeSetRow(LineSource *stream, int room, int *numbers);

#endif
