#pragma once
// The simulator's web page: the live screen, the keys and the controls.

extern const char* const SIM_PAGE_HTML;
