#pragma once
// The virtual CAN bus of a simulated device and its clients.
#include <linux/can.h>
#include <string>

// Serves ROOT/run/can/can0 and can1 until SIGINT or SIGTERM. Exit code.
int can_bus_serve(const std::string& root);

// A client of a port's bus: -1 with a message in *error when it is not running.
int can_bus_connect(const std::string& root, const char* ifname, std::string* error);
