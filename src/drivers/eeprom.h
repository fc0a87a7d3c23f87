#pragma once
// The record layer over the persistent store: one record at offset 0 whose first word
// is a CRC of everything behind it and whose second is the number of stores.
#include "dash_types.h"

// Set when the record is to be stored at the next Store_eeprom.
extern U8 gucStoreEepromRequired;

// Reads the record from the store. A CRC that does not fit (an erased store always
// fails) loads the application's defaults and asks for a store.
void Restore_eeprom(void* record, void* copy, U32 size);
// When a store is asked for and the record changed: counts the store, puts the new CRC
// in, hands the record to the store and keeps it in `copy`. Always clears the request.
void Store_eeprom(void* record, void* copy, U32 size);

// Supplied by the application: fills the record with its defaults.
void load_eeprom_defaults(void);
