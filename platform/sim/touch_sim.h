#pragma once
// The touch panel of a simulated device: ROOT/run/touch, a Unix datagram socket that
// the open panel binds. Each datagram is one sample as text, "x y pressure", x and y in
// screen pixels where the finger is, pressure 0 for the lift.
#include <string>
#include <sys/un.h>

// The socket address of the panel of `root`; 0 when the path is too long.
int touch_sim_address(const char* root, struct sockaddr_un* addr);
// What the panel reports for a finger at screen pixel (x, y): a fixed, slightly turned
// and offset map, so that an uncalibrated panel misses by a visible amount.
void touch_sim_panel(int x, int y, int* rawX, int* rawY);
// Sends one sample to the panel of `root`. "" or what went wrong.
std::string touch_sim_send(const std::string& root, int x, int y, int pressure);
