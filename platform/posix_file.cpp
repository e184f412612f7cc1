#include "platform/posix_file.h"

#include "platform/file_failures.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <utility>

namespace kelb::platform {

namespace {

/// Repeats a system call that a signal interrupted.
template <class Call>
auto repeat(Call call) noexcept {
    auto result = call();
    while (result == -1 && errno == EINTR) {
        result = call();
    }
    return result;
}

constexpr std::size_t kReadStep = 65'536; ///< bytes asked for where the size says nothing

class PosixFile final : public RandomAccessFile {
public:
    explicit PosixFile(Descriptor file) : file_(std::move(file)) {}

    std::uint64_t size() const override { return static_cast<std::uint64_t>(status("find the size of").st_size); }

    std::size_t readAt(std::uint64_t offset, std::span<std::byte> buffer) const override {
        std::size_t done = 0;
        while (done < buffer.size()) {
            const ssize_t count = repeat([&] {
                return pread(file_.number(), buffer.data() + done, buffer.size() - done, position(offset + done));
            });
            if (count < 0) {
                throw systemFailure("read", file_.path(), errno);
            }
            if (count == 0) {
                break;
            }
            done += static_cast<std::size_t>(count);
        }
        return done;
    }

    void writeAt(std::uint64_t offset, std::span<const std::byte> bytes) override {
        std::size_t done = 0;
        while (done < bytes.size()) {
            const ssize_t count = repeat([&] {
                return pwrite(file_.number(), bytes.data() + done, bytes.size() - done, position(offset + done));
            });
            if (count < 0) {
                throw systemFailure("write", file_.path(), errno);
            }
            done += static_cast<std::size_t>(count);
        }
    }

    void truncate(std::uint64_t size) override {
        if (repeat([&] { return ftruncate(file_.number(), position(size)); }) != 0) {
            throw systemFailure("set the size of", file_.path(), errno);
        }
    }

    void sync() override { file_.syncData(); }

    std::string identity() const override {
        const struct ::stat found = status("identify");
        return std::to_string(found.st_dev) + ":" + std::to_string(found.st_ino);
    }

private:
    static off_t position(std::uint64_t offset) noexcept { return static_cast<off_t>(offset); }

    struct ::stat status(std::string_view operation) const {
        struct ::stat found {};
        if (fstat(file_.number(), &found) != 0) {
            throw systemFailure(operation, file_.path(), errno);
        }
        return found;
    }

    Descriptor file_;
};

} // namespace

Descriptor::Descriptor(std::string_view operation, std::u16string_view path, const std::string& native, int flags,
                       unsigned mode)
    : operation_(operation), path_(path),
      number_(repeat([&] { return ::open(native.c_str(), flags | O_CLOEXEC, mode); })) {
    if (number_ < 0) {
        fail(errno);
    }
}

Descriptor::Descriptor(std::string_view operation, std::u16string_view path, int number) noexcept
    : operation_(operation), path_(path), number_(number) {}

Descriptor::Descriptor(Descriptor&& other) noexcept
    : operation_(std::move(other.operation_)), path_(std::move(other.path_)),
      number_(std::exchange(other.number_, -1)) {}

Descriptor::~Descriptor() {
    if (number_ >= 0) {
        ::close(number_);
    }
}

void Descriptor::fail(int code) const {
    throw systemFailure(operation_, path_, code);
}

void Descriptor::close() {
    // Never repeated: the descriptor is gone even when the call was interrupted.
    if (::close(std::exchange(number_, -1)) != 0 && errno != EINTR) {
        fail(errno);
    }
}

std::string Descriptor::read(std::size_t limit) const {
    struct ::stat status {};
    if (fstat(number_, &status) != 0) {
        fail(errno);
    }
    if (S_ISDIR(status.st_mode)) {
        fail(EISDIR);
    }
    std::string bytes;
    // One byte more than the size is asked for: not to get it tells the end without another call.
    const auto size = static_cast<std::size_t>(status.st_size);
    std::size_t step = size > 0 ? size + 1 : kReadStep;
    while (bytes.size() < limit) {
        const std::size_t before = bytes.size();
        const std::size_t wanted = std::min(limit - before, step);
        bytes.resize(before + wanted);
        const ssize_t count = repeat([&] { return ::read(number_, bytes.data() + before, wanted); });
        if (count < 0) {
            fail(errno);
        }
        bytes.resize(before + static_cast<std::size_t>(count));
        if (count == 0 || (bytes.size() == size && bytes.size() < before + wanted)) {
            break;
        }
        step = kReadStep;
    }
    return bytes;
}

void Descriptor::write(std::string_view bytes) const {
    while (!bytes.empty()) {
        const ssize_t count = repeat([&] { return ::write(number_, bytes.data(), bytes.size()); });
        if (count < 0) {
            fail(errno);
        }
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
}

void Descriptor::syncData() const {
    if (repeat([&] { return fdatasync(number_); }) != 0) {
        throw systemFailure("bring to disk", path_, errno);
    }
}

void lockFile(const Descriptor& file, bool exclusive) {
    struct flock whole {}; // from 0 to the end, however far the file grows
    whole.l_type = exclusive ? F_WRLCK : F_RDLCK;
    whole.l_whence = SEEK_SET;
    if (repeat([&] { return fcntl(file.number(), F_OFD_SETLK, &whole); }) == 0) {
        return;
    }
    const int code = errno;
    if (code == EAGAIN || code == EACCES) {
        file.fail(EAGAIN);
    }
    const bool noLocks = code == ENOLCK || code == EINVAL || code == ENOSYS || code == EOPNOTSUPP;
    if (exclusive || !noLocks) {
        file.fail(noLocks ? ENOLCK : code);
    }
}

std::unique_ptr<RandomAccessFile> makeRandomAccessFile(Descriptor file) {
    return std::make_unique<PosixFile>(std::move(file));
}

} // namespace kelb::platform
