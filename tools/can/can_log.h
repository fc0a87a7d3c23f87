#pragma once
// Frames as text, in the formats of the common CAN command-line tools:
//   log line   "(1700000000.123456) can0 123#1122334455667788"
//   frame      "123#11223344", "12345678#11.22", "123#R"
#include <cstdint>
#include <linux/can.h>
#include <string>

// "123#11223344" (three hex digits: standard id, eight: extended). False on bad text.
bool can_parse_frame(const char* text, struct can_frame* frame);
std::string can_format_frame(const struct can_frame& frame);

struct CAN_LOG_LINE_T {
    double time;           // seconds
    std::string ifname;    // "can0"
    struct can_frame frame;
};
bool can_parse_log_line(const char* line, CAN_LOG_LINE_T* out);
std::string can_format_log_line(double time, const char* ifname, const struct can_frame& frame);
