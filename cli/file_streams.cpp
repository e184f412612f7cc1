#include "cli/file_streams.h"

#include <span>

namespace kelb::cli {

namespace {

constexpr std::size_t kBufferBytes = 65536;

std::unique_ptr<platform::RandomAccessFile> openEmpty(platform::FileSystem& files, std::u16string_view path) {
    using platform::OpenMode;
    auto file = files.open(path, files.fileExists(path) ? OpenMode::ReadWrite : OpenMode::CreateNew);
    file->truncate(0); // of a run that was cut short
    return file;
}

} // namespace

FileBuffer::FileBuffer(std::unique_ptr<platform::RandomAccessFile> file)
    : file_(std::move(file)), bytes_(kBufferBytes) {}

FileBuffer::int_type FileBuffer::underflow() {
    const std::size_t read = file_->readAt(position_, std::as_writable_bytes(std::span(bytes_)));
    position_ += read;
    setg(bytes_.data(), bytes_.data(), bytes_.data() + read);
    return read == 0 ? traits_type::eof() : traits_type::to_int_type(bytes_.front());
}

FileBuffer::int_type FileBuffer::overflow(int_type unit) {
    sync();
    setp(bytes_.data(), bytes_.data() + bytes_.size());
    if (!traits_type::eq_int_type(unit, traits_type::eof())) {
        sputc(traits_type::to_char_type(unit));
    }
    return traits_type::not_eof(unit);
}

int FileBuffer::sync() {
    if (const auto waiting = static_cast<std::size_t>(pptr() - pbase()); waiting != 0) {
        file_->writeAt(position_, std::as_bytes(std::span(bytes_).first(waiting)));
        position_ += waiting;
        setp(bytes_.data(), bytes_.data() + bytes_.size());
    }
    return 0;
}

FileReader::FileReader(platform::FileSystem& files, std::u16string_view path)
    : std::istream(nullptr), buffer_(files.open(path, platform::OpenMode::Read)) {
    rdbuf(&buffer_);
    exceptions(badbit); // passes on what the file throws
}

FileWriter::FileWriter(platform::FileSystem& files, std::u16string_view path)
    : std::ostream(nullptr), files_(files), path_(path), part_(path_ + u".part"),
      buffer_(std::make_unique<FileBuffer>(openEmpty(files, part_))) {
    rdbuf(buffer_.get());
    exceptions(badbit);
}

void FileWriter::finish() {
    flush();
    buffer_->file().sync();
    exceptions(goodbit); // a stream without a buffer is a bad one, which is no fault here
    rdbuf(nullptr);
    buffer_.reset();
    files_.renameFile(part_, path_);
}

} // namespace kelb::cli
