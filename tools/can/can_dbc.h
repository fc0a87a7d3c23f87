#pragma once
// The dash's CAN message set as a DBC file, written from the same table the dash
// decodes with.
#include <cstdio>

// The whole DBC text.
void can_dbc_write(FILE* out);
// `motordash-can dbc [FILE]`: gets the arguments after the command; without FILE the
// text goes to standard output.
int can_dbc(int argc, char** argv);
