#pragma once
// The commands of motordash-sim; each returns the process exit code.

int sim_init(int argc, char** argv);
int sim_screenshot(int argc, char** argv);
int sim_settings(int argc, char** argv);
int sim_key(int argc, char** argv);
