#pragma once
// The simulated board's control socket, ROOT/run/ioboard/control: one request, one
// reply, for the simulator and tests. Requests:
//   status                 the board as JSON (see ioboard_status_json), with "link"
//   set NAME VALUE         an input (see ioboard_set_input); replies "ok"
//   link off | link on     pulls the board off the link (it stops answering and sending)
//                          or puts it back; replies "ok"
// Anything else replies "error: " and why.
#include <string>

std::string ioboard_control_path(const std::string& root);

// Sends a request to the board of a root; false with the reason in *reply when no board
// answers within two seconds.
bool ioboard_control(const std::string& root, const std::string& request, std::string* reply);
