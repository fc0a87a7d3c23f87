#pragma once
// The log files the soak finds on the stick, read back row by row.
#include <cstdint>
#include <string>
#include <vector>

constexpr uint32_t SOAK_LOG_COLUMNS = 154;  // the time stamp and 153 values
constexpr uint32_t SOAK_ROW_PERIOD_MS = 20;

struct SOAK_LOG_FILE_T {
    std::string name;
    uint32_t number = 0;  // from the name: Velnor_v650_CAN_00000003.csv is 3
    uint64_t rows = 0;    // rows with a time stamp and every value
    uint64_t badRows = 0; // anything else below the header
    uint32_t headers = 0;
    uint64_t firstMs = 0, lastMs = 0;  // time stamps of the first and last good row
    uint64_t rowsMissing = 0;          // rows the time stamps skip (20 ms apart)
};

// The dash's uptime in ms from a row's time stamp "2000-01-02::01:01:01.001"; false
// when it is not one.
bool SoakRowTime(const char* text, uint64_t* ms);
// Reads one log file. False when it cannot be read.
bool SoakReadLog(const std::string& path, SOAK_LOG_FILE_T* file);
// Every log file in a folder, by number.
std::vector<SOAK_LOG_FILE_T> SoakReadLogs(const std::string& folder);

// The logger's own counts in one pass, as a list sampled on every pass shows them.
struct SOAK_LOGGER_PASS_T {
    uint32_t rows;      // FrameCnt
    uint32_t lastSync;  // LastSync
    bool open;          // FileOpen
};
// What they say of each file, in the order the files opened: the rows counted when it
// opened, at its last sync, and when it closed. A file's rows are written after the
// samples of their passes, from its opening pass up to the pass that closes it.
struct SOAK_LOG_ACCOUNT_T {
    uint32_t opened, synced, closed;
};
std::vector<SOAK_LOG_ACCOUNT_T> SoakLogAccounts(const std::vector<SOAK_LOGGER_PASS_T>& passes);
