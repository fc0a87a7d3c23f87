#pragma once
// The dash's description file for calibration tools (ASAM MCD-2 MC, "A2L"), made from the
// address map the slave itself is built from: a tool that loads it knows every variable
// by name, type, address and limits, and how to reach the slave on CAN.
#include <string>

std::string XcpA2lDescription(void);
