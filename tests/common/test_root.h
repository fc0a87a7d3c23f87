#pragma once
// A temporary device root for one test: DASH_ROOT points at it while it lives.
#include <cstdio>
#include <cstdlib>
#include <ftw.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

// The whole content of a file; empty when it cannot be read.
inline std::string ReadWholeFile(const std::string& path)
{
    std::string data;
    FILE* f = fopen(path.c_str(), "rb");
    if (!f) return data;
    char buf[4096];
    size_t n;
    while ((n = fread(buf, 1, sizeof(buf), f)) > 0) data.append(buf, n);
    fclose(f);
    return data;
}

class TestRoot {
public:
    TestRoot()
    {
        char tmpl[] = "/tmp/motordash-test-XXXXXX";
        path_ = mkdtemp(tmpl);
        setenv("DASH_ROOT", path_.c_str(), 1);
    }
    ~TestRoot()
    {
        unsetenv("DASH_ROOT");
        nftw(path_.c_str(), [](const char* p, const struct stat*, int, struct FTW*) { return remove(p); }, 16,
             FTW_DEPTH | FTW_PHYS);
    }
    const std::string& Path() const { return path_; }
    std::string Abs(const std::string& rel) const { return path_ + "/" + rel; }

    // Writes a file under the root, making its folders.
    void Write(const std::string& rel, const std::string& content, mode_t mode = 0644) const
    {
        for (size_t i = 0; (i = rel.find('/', i)) != std::string::npos; i++) mkdir(Abs(rel.substr(0, i)).c_str(), 0755);
        const std::string p = Abs(rel);
        const std::string tmp = p + ".tmp";
        FILE* f = fopen(tmp.c_str(), "wb");
        if (!f) return;
        fwrite(content.data(), 1, content.size(), f);
        fclose(f);
        chmod(tmp.c_str(), mode);
        rename(tmp.c_str(), p.c_str());  // never run a script while it is half written
    }

    std::string Read(const std::string& rel) const { return ReadWholeFile(Abs(rel)); }

private:
    std::string path_;
};
