#pragma once
// The simulator's web page: the live screen, the keys, the controls and the log viewer.
#include <cstddef>
#include <string>

extern const char* const SIM_PAGE_HTML;

// A file that the page loads besides itself, built into the simulator.
struct SIM_PAGE_FILE_T {
    const char* contentType;
    const unsigned char* data;
    size_t size;
};
// The file the page finds at `path` ("/web/..."); false for none.
bool sim_page_file(const std::string& path, SIM_PAGE_FILE_T* file);
