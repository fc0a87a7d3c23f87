#pragma once
#include <string>

// The commands of motordash-sim; each returns the process exit code.

int sim_init(int argc, char** argv);
int sim_screenshot(int argc, char** argv);
int sim_settings(int argc, char** argv);
int sim_key(int argc, char** argv);
int sim_run(int argc, char** argv);

// Makes (or completes) a device root for product "310" or "720"; the application's
// data in it are kept. False with the reason in *error.
bool sim_make_root(const std::string& root, const char* product, std::string* error);
// Presses (true) or releases key 1 to 5 of a device root. "" or what went wrong.
std::string sim_key_set(const std::string& root, int key, bool pressed);
