// motordash-sim: makes and inspects simulated dash devices.
#include "sim_commands.h"
#include "tool_commands.h"

namespace {

constexpr TOOL_COMMAND_T m_commands[] = {
    {"run", sim_run, "run [--root ROOT] [--port N] [--product 310|720] [--no-ioboard]   the whole simulated dash, with a web page"},
    {"init", sim_init, "init ROOT [--product 310|720]   make a device root that passes the start gate"},
    {"screenshot", sim_screenshot, "screenshot ROOT FILE.png        write the page on show as a PNG"},
    {"key", sim_key, "key ROOT 1-5 press|release        press or release a key of a running dash"},
    {"settings", sim_settings, "settings ROOT|FILE              what the settings store holds and what the dash would load"},
};

}  // namespace

int main(int argc, char** argv)
{
    return tool_dispatch("motordash-sim", m_commands, argc, argv);
}
