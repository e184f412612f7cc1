#pragma once

#include <stdexcept>

/// Why a job does not start or cannot go on, beside errors of databases and files. what() is one UTF-8 line that says
/// what is wrong and what to do. (Exit status of the command line in brackets.)
namespace kelb::jobs {

/// Something that the job needs is not there: a database, a table, columns, a file. (1)
class JobError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// A setting is missing or cannot be understood. (2)
class SettingError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// A destructive job that nobody has agreed to. (2)
class Refused : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

} // namespace kelb::jobs
