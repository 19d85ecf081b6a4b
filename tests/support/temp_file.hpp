// A file with the given content that goes with the test.
#pragma once

#include <gtest/gtest.h>

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

namespace vexar_test {

class TempFile {
public:
    explicit TempFile(const std::string &content) {
        int fd = mkstemps(path_.data(), 4);
        EXPECT_GE(fd, 0);
        close(fd);
        std::ofstream(path_) << content;
    }
    ~TempFile() { std::remove(path_.c_str()); }
    TempFile(const TempFile &) = delete;
    TempFile &operator=(const TempFile &) = delete;

    const char *path() const { return path_.c_str(); }

private:
    std::string path_ = "/tmp/vexar_xml_XXXXXX.xml";
};

}  // namespace vexar_test
