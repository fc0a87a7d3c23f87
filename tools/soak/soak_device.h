#pragma once
// The simulated device around the soak's dash: its programs, the USB stick as the
// system scripts mount and unmount it, and what can be seen of the running dash from
// outside (resident memory, the framebuffer's pan count, sanitizer reports).
#include <cstdint>
#include <string>
#include <sys/types.h>
#include <vector>

// Starts a program with the entries of `env` ("NAME=value") set in its environment,
// standard output and error to the files given (appended). -1 with errno when it cannot.
pid_t SoakSpawn(const std::vector<std::string>& args, const std::vector<std::string>& env, const std::string& out,
                const std::string& err);
// Waits up to timeoutMs for the program's end; true with its wait status when it ended.
bool SoakWait(pid_t pid, int timeoutMs, int* status);
// "exit code 0", "signal 11 (Segmentation fault)".
std::string SoakDescribeStatus(int status);

// Resident memory of a running process in KiB (VmRSS), 0 when it cannot be read.
uint64_t SoakResidentKb(pid_t pid);
// The pan count of the root's framebuffer; false while there is no valid one.
bool SoakPanCount(const std::string& root, uint64_t* count);

// The lines of a program's standard error that report a sanitizer finding or a crash.
std::vector<std::string> SoakSanitizerLines(const std::string& text);
std::string SoakReadFile(const std::string& path);

// The stick as the system scripts handle it. It lives in ROOT/.stick while out, and is
// mounted as media/disk_sda1, named by media/usbinfo.txt, while in.
extern const char* const SOAK_STICK_FOLDER;  // under the root, while out
bool SoakStickInsert(const std::string& root, std::string* error);
// Where the stick's files are now, in or out.
std::string SoakStickFiles(const std::string& root);
// Out without an unmount: the folder goes away under the dash.
bool SoakStickPull(const std::string& root, std::string* error);
// The scripts' answer to the dash's eject request, if it has made one: the stick
// unmounted and out, "USBSTICK_EJECTREADY" in app_command and SIGUSR1 to the dash.
bool SoakStickAnswerEject(const std::string& root, pid_t dash);
