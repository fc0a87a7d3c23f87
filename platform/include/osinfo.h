#pragma once
// The kernel's release text ("5.10.0-dash-121"): uname on the dash, the file
// proc/sys/kernel/osrelease in the simulated device.
#include <cstddef>

// 1 with the text in buf (no line feed), 0 when it cannot be read.
int osinfo_release(char* buf, size_t size);
