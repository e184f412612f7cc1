#pragma once

#include "tests/platform/temporary_folder.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>

namespace kelb::ado::testing {

/// Real workbooks, written by another program (python3-xlwt) when the tests run: tests/data/sheets/make_workbooks.py.
class Workbooks {
public:
    Workbooks() {
        const std::string command =
            std::string(KELB_PYTHON) + " " KELB_TEST_DATA "/sheets/make_workbooks.py " + folder_.native().string();
        EXPECT_EQ(std::system(command.c_str()), 0) << command; // NOLINT(cert-env33-c): the test's own words
    }
    std::string path(const std::string& name) const { return (folder_.native() / name).string(); }
    std::string bytes(const std::string& name) const {
        std::ifstream file(path(name), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    std::u16string folder() const { return folder_.path(); }

private:
    platform::TemporaryFolder folder_;
};

/// One set of them for a whole test program.
inline const Workbooks& workbooks() {
    static const Workbooks all;
    return all;
}

} // namespace kelb::ado::testing
