// motordash-sim screenshot: the page on show of a device root, as a PNG.
#include <cstdio>

#include "png_io.h"
#include "sim_commands.h"
#include "sim_screen.h"

int sim_screenshot(int argc, char** argv)
{
    if (argc != 2) {
        fprintf(stderr, "usage: motordash-sim screenshot ROOT FILE.png\n");
        return 2;
    }
    SIM_SCREEN_T screen;
    std::string error = sim_screen_read(argv[0], &screen);
    if (error.empty()) error = png_write_rgb565(argv[1], screen.pixels.data(), screen.width, screen.height, screen.width);
    if (!error.empty()) {
        fprintf(stderr, "motordash-sim screenshot: %s\n", error.c_str());
        return 1;
    }
    return 0;
}
