#include "soak_log.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <dirent.h>

namespace {

constexpr const char* HEADER_FIRST_LINE = "Interval (ms),1";
// A row longer than the logger's buffer is cut to this many bytes, its line end kept.
constexpr size_t CUT_ROW_BYTES = 1170;

// One line of a log below its header.
void _row(SOAK_LOG_FILE_T* file, const std::string& line, bool ended)
{
    uint64_t ms;
    const size_t fields = (size_t)std::count(line.begin(), line.end(), ',') + 1;
    const bool whole = ended && (fields == SOAK_LOG_COLUMNS || line.size() + 1 == CUT_ROW_BYTES);
    if (!whole || !SoakRowTime(line.c_str(), &ms)) {
        file->badRows++;
        return;
    }
    if (file->rows++ == 0) file->firstMs = ms;
    file->lastMs = ms;
}

}  // namespace

bool SoakRowTime(const char* text, uint64_t* ms)
{
    unsigned day, hours, minutes, seconds, millis;
    int used = 0;
    if (sscanf(text, "2000-01-%2u::%2u:%2u:%2u.%3u,%n", &day, &hours, &minutes, &seconds, &millis, &used) != 5 ||
        used != 25 || day < 1)
        return false;
    *ms = (((uint64_t)(day - 1) * 24 + hours) * 3600 + minutes * 60 + seconds) * 1000 + millis;
    return true;
}

bool SoakReadLog(const std::string& path, SOAK_LOG_FILE_T* file)
{
    FILE* f = fopen(path.c_str(), "rb");
    if (!f) return false;
    const size_t slash = path.rfind('/');
    file->name = slash == std::string::npos ? path : path.substr(slash + 1);
    unsigned number = 0;
    if (sscanf(file->name.c_str(), "Velnor_v%*3u_CAN_%8u.csv", &number) == 1) file->number = number;
    // A header is five lines from its "Interval" line on; rows follow it.
    std::string line;
    int headerLeft = 0;
    for (int c = fgetc(f);; c = fgetc(f)) {
        if (c != EOF && c != '\n') {
            line += (char)c;
            continue;
        }
        if (c == EOF && line.empty()) break;
        if (line == HEADER_FIRST_LINE) {
            file->headers++;
            headerLeft = 4;
        } else if (headerLeft > 0) {
            headerLeft--;
        } else {
            _row(file, line, c == '\n');
        }
        line.clear();
        if (c == EOF) break;
    }
    fclose(f);
    // Rows the time stamps span less the rows there: rows come every 20 ms, and one
    // late can be followed by one early.
    if (file->rows > 1) {
        const uint64_t spanned = (file->lastMs - file->firstMs + SOAK_ROW_PERIOD_MS / 2) / SOAK_ROW_PERIOD_MS + 1;
        file->rowsMissing = spanned > file->rows ? spanned - file->rows : 0;
    }
    return true;
}

std::vector<SOAK_LOG_FILE_T> SoakReadLogs(const std::string& folder)
{
    std::vector<SOAK_LOG_FILE_T> files;
    DIR* dir = opendir(folder.c_str());
    if (!dir) return files;
    while (const struct dirent* e = readdir(dir)) {
        SOAK_LOG_FILE_T file;
        if (e->d_type == DT_REG && strstr(e->d_name, ".csv") && SoakReadLog(folder + "/" + e->d_name, &file))
            files.push_back(file);
    }
    closedir(dir);
    std::sort(files.begin(), files.end(),
              [](const SOAK_LOG_FILE_T& a, const SOAK_LOG_FILE_T& b) { return a.number < b.number; });
    return files;
}

std::vector<SOAK_LOG_ACCOUNT_T> SoakLogAccounts(const std::vector<SOAK_LOGGER_PASS_T>& passes)
{
    std::vector<SOAK_LOG_ACCOUNT_T> files;
    bool open = false;
    uint32_t lastSync = 0;
    for (const SOAK_LOGGER_PASS_T& p : passes) {
        if (open) files.back().closed = p.rows;
        if (p.open && !open) files.push_back({p.rows, p.rows, p.rows});
        open = p.open;
        // A sync runs before the sample of its pass: every row counted then was written
        // before it.
        if (open && p.lastSync != lastSync) files.back().synced = p.rows;
        lastSync = p.lastSync;
    }
    return files;
}
