#pragma once
// A byte store that behaves like an EEPROM: an image in memory, mirrored by a thread
// of its own to a file in the flash file system, with the previous file kept beside it
// as ".old" so that a save cut short by power loss falls back one generation.
#include "dash_types.h"

enum { EEPROM_SIZE = 32 * 1024 };

// Loads the image from the current file, else the ".old" one, else fills it with
// 0xFF; a file is taken when it yields EEPROM_SIZE bytes. Then starts the thread.
void eeprom_init(void);
// Stops and joins the thread. A change it has not yet begun to save is lost.
void eeprom_deinit(void);
// Both work on the image only and never wait for the file. Bytes outside the image
// are never touched: a range is clamped to the image, and a read fills the part of
// the destination beyond it with 0xFF, as from erased memory.
void eeprom_read(U32 offset, void* destination, U32 length);
void eeprom_write(U32 offset, const void* source, U32 length);

// Test hooks: for tests and benchmarks only, never called by the dash.
// Called by the thread with each snapshot it is about to save, before any
// file is touched, so that a test can hold a save in the middle. nullptr removes it.
typedef void (*EEPROM_SAVE_HOOK_T)(const U8* image);
void eeprom_test_set_save_hook(EEPROM_SAVE_HOOK_T hook);
