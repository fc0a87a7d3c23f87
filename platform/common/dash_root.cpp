#include "dash_root.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sys/stat.h>

const char* root_prefix(void)
{
    const char* root = getenv("DASH_ROOT");
    return root ? root : "";
}

const char* root_path(char* buf, size_t size, const char* path)
{
    if (!buf || size == 0 || !path) return nullptr;
    const char* root = root_prefix();
    size_t rootLen = strlen(root);
    // "/x" joined to "ROOT/" must not give "ROOT//x".
    while (rootLen > 1 && root[rootLen - 1] == '/') rootLen--;
    int n = snprintf(buf, size, "%.*s%s", (int)rootLen, root, path);
    if (n < 0 || (size_t)n >= size) {
        buf[0] = '\0';
        return nullptr;
    }
    return buf;
}

int root_is_valid(void)
{
    const char* root = root_prefix();
    if (root[0] == '\0') return 1;
    struct stat st;
    return stat(root, &st) == 0 && S_ISDIR(st.st_mode);
}
