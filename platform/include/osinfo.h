#pragma once
// The kernel's release text ("5.10.0-dash-121"): uname on the dash, the file
// proc/sys/kernel/osrelease in the simulated device.
#include <cstddef>
#include <ctime>

// 1 with the text in buf (no line feed), 0 when it cannot be read.
int osinfo_release(char* buf, size_t size);

// The uptime of the device: CLOCK_MONOTONIC on the dash, which starts the program at
// power-on. A PC has been up for hours, so the simulated device counts from the start
// of the program, its power-on.
void osinfo_uptime(struct timespec* ts);
