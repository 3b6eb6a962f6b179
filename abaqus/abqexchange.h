// The order of blocks by their first numbers.
#ifndef KIVOM_ABAQUS_ABQEXCHANGE_H
#define KIVOM_ABAQUS_ABQEXCHANGE_H

// order[p] is the former position of the block that ends at position p when, for each place A from the front and
// each place B behind it, the two blocks are exchanged wherever A's first number is larger than B's.
//
// Different numbers end ascending. Where blocks begin with the same number, the exchanges leave them in an order
// of their own, which decides tags and groups: it is reproduced exactly, but in n log n steps, because decks
// with hundreds of thousands of one-line sections exist.
void ABQExchangeOrder(int n, const int *firsts, int *order);

#endif
