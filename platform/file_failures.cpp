#include "platform/file_failures.h"

#include <array>
#include <cerrno>
#include <system_error>

namespace kelb::platform {

namespace {

using Kind = FileError::Kind;

struct Failure {
    int code;
    Kind kind;
    std::string_view reason;
};

constexpr auto kFailures = std::to_array<Failure>({
    {ENOENT, Kind::NotFound, "no such file or folder"},
    {ENOTDIR, Kind::NotFound, "a part of the path is not a folder"},
    {EACCES, Kind::AccessDenied, "access denied; check the permissions of the file and its folder"},
    {EPERM, Kind::AccessDenied, "not permitted; check the owner and the attributes of the file"},
    {EROFS, Kind::AccessDenied, "the disk is read-only"},
    {EEXIST, Kind::AlreadyExists, "the file is there already"},
    {EAGAIN, Kind::Locked, "in use by another program; close it there and try again"},
    {EBUSY, Kind::Locked, "in use by the system or another program"},
    {ETXTBSY, Kind::Locked, "it is a program that is running"},
    {ENOSPC, Kind::NoSpace, "the disk is full; make room and try again"},
#ifdef EDQUOT
    {EDQUOT, Kind::NoSpace, "the disk quota is used up; make room and try again"},
#endif
    {EFBIG, Kind::NoSpace, "the file would grow past the limit of the system or the disk"},
    {EISDIR, Kind::Other, "it is a folder"},
    {ENOTEMPTY, Kind::Other, "the folder is not empty"},
    {ENAMETOOLONG, Kind::Other, "the name is too long"},
    {EMFILE, Kind::Other, "too many files are open in this program"},
    {ENFILE, Kind::Other, "too many files are open on this machine"},
    {ENOLCK, Kind::Other, "the disk or share offers no file locks; copy the file to a local disk"},
    {EIO, Kind::Other, "the disk or share reports a fault"},
});

} // namespace

FileError systemFailure(std::string_view operation, std::u16string_view path, int code) {
    for (const Failure& failure : kFailures) {
        if (failure.code == code) {
            return {failure.kind, operation, path, code, failure.reason};
        }
    }
    return {Kind::Other, operation, path, code, std::generic_category().message(code)};
}

FileError notFound(std::string_view operation, std::u16string_view path) {
    return systemFailure(operation, path, ENOENT);
}

FileError alreadyThere(std::string_view operation, std::u16string_view path) {
    return systemFailure(operation, path, EEXIST);
}

FileError locked(std::string_view operation, std::u16string_view path) {
    return systemFailure(operation, path, EAGAIN);
}

FileError readOnly(std::string_view operation, std::u16string_view path) {
    return systemFailure(operation, path, EACCES);
}

FileError noSpace(std::string_view operation, std::u16string_view path) {
    return systemFailure(operation, path, ENOSPC);
}

} // namespace kelb::platform
