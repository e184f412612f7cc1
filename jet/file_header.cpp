#include "jet/file_header.h"

#include "jet/byte_order.h"
#include "jet/error.h"
#include "jet/usage_map.h"

#include "platform/utf8.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstring>
#include <string>

namespace kelb::jet {

namespace {

constexpr std::uint32_t kMagic = 0x00000100;
constexpr std::string_view kJetName = "Standard Jet DB";
constexpr std::string_view kAceName = "Standard ACE DB";
constexpr std::string_view kMoneyName = "MSISAM Database";
constexpr std::size_t kNameOffset = 4;
constexpr std::size_t kVersionOffset = 0x14;
constexpr std::size_t kMaskedOffset = 0x18;
constexpr std::size_t kMapOffset = 0x18, kPendingMapOffset = 0x1C, kSystemTablesOffset = 0x20;
constexpr std::size_t kCodePageOffset = 0x3C;
constexpr std::size_t kKeyOffset = 0x3E;
constexpr std::size_t kPasswordOffset = 0x42, kPasswordBytes = 40, kJet3PasswordBytes = 20;
constexpr std::size_t kBuildOffset = 0x6A;
constexpr std::size_t kSortOrderOffset = 0x6E;
constexpr std::size_t kDateOffset = 0x72;
constexpr std::size_t kCommitOffset = 0xE00;

/// The security ids in the catalog of a new database are XORed with a stream that depends on its header in an unknown
/// way, so a new file gets the creation date for which its ids are right; the real date is in the catalog rows.
constexpr double kCreationDate = 42329.94480300926;
constexpr std::uint32_t kBuild = 0x261C;

/// XORed over the 128 bytes from 0x18 on, the same in every file.
constexpr std::array<std::uint8_t, 128> kMask = {
    0xb5, 0x6f, 0x03, 0x62, 0x61, 0x08, 0xc2, 0x55, 0xeb, 0xa9, 0x67, 0x72, 0x43, 0x3f, 0x00, 0x9c, //
    0x7a, 0x9f, 0x90, 0xff, 0x80, 0x9a, 0x31, 0xc5, 0x79, 0xba, 0xed, 0x30, 0xbc, 0xdf, 0xcc, 0x9d, //
    0x63, 0xd9, 0xe4, 0xc3, 0x7b, 0x42, 0xfb, 0x8a, 0xbc, 0x4e, 0x86, 0xfb, 0xec, 0x37, 0x5d, 0x44, //
    0x9c, 0xfa, 0xc6, 0x5e, 0x28, 0xe6, 0x13, 0xb6, 0x8a, 0x60, 0x54, 0x94, 0x7b, 0x36, 0xf5, 0x72, //
    0xdf, 0xb1, 0x77, 0xf4, 0x13, 0x43, 0xcf, 0xaf, 0xb1, 0x33, 0x34, 0x61, 0x79, 0x5b, 0x92, 0xb5, //
    0x7c, 0x2a, 0x05, 0xf1, 0x7c, 0x99, 0x01, 0x1b, 0x98, 0xfd, 0x12, 0x4f, 0x4a, 0x94, 0x6c, 0x3e, //
    0x60, 0x26, 0x5f, 0x95, 0xf8, 0xd0, 0x89, 0x24, 0x85, 0x67, 0xc6, 0x1f, 0x27, 0x44, 0xd2, 0xee, //
    0xcf, 0x65, 0xed, 0xff, 0x07, 0xc7, 0x46, 0xa1, 0x78, 0x16, 0x0c, 0xed, 0xe9, 0x2d, 0x62, 0xd4};
constexpr std::size_t kJet3MaskedBytes = 126;
static_assert(kMaskedOffset + kMask.size() == kHeaderFront);

void applyMask(std::span<std::byte> page, std::size_t bytes) {
    for (std::size_t i = 0; i < bytes; ++i)
        page[kMaskedOffset + i] ^= std::byte{kMask[i]};
}

/// The password is XORed with this word over and over.
std::uint32_t passwordMask(double date) noexcept {
    return std::isfinite(date) && std::abs(date) < 1e9 ? static_cast<std::uint32_t>(static_cast<std::int32_t>(date))
                                                       : 0;
}

[[noreturn]] void refuse(Error::Kind kind, std::u16string_view path, const std::string& reason) {
    throw Error(kind, platform::toUtf8(path) + " " + reason);
}

Dialect dialectOf(std::span<const std::byte> front, std::u16string_view path) {
    const std::string_view name(reinterpret_cast<const char*>(&front[kNameOffset]), kJetName.size());
    if (name == kMoneyName)
        refuse(Error::Kind::UnsupportedVersion, path, "is a file of Microsoft Money, not an Access database");
    if (load32(front.data()) != kMagic || (name != kJetName && name != kAceName))
        refuse(Error::Kind::NotADatabase, path, "is not an Access database");
    switch (load8(&front[kVersionOffset])) {
    case 0:
        return Dialect::Jet3;
    case 1:
        return Dialect::Jet4;
    case 2:
    case 3:
    case 4:
    case 5:
    case 6:
        return Dialect::Ace;
    default:
        refuse(Error::Kind::UnsupportedVersion, path,
               "has the unknown version " + std::to_string(load8(&front[kVersionOffset])) +
                   "; known are those of Access 97 to 2019");
    }
}

bool hasPassword(std::span<const std::byte> header, Dialect dialect) {
    if (dialect == Dialect::Jet3) {
        const auto password = header.subspan(kPasswordOffset, kJet3PasswordBytes);
        return std::any_of(password.begin(), password.end(), [](std::byte b) { return b != std::byte{0}; });
    }
    const std::uint32_t mask = passwordMask(std::bit_cast<double>(load64(&header[kDateOffset])));
    for (std::size_t at = 0; at < kPasswordBytes; at += 4)
        if (load32(&header[kPasswordOffset + at]) != mask)
            return true;
    return false;
}

} // namespace

FileHeader readFileHeader(std::span<const std::byte> front, std::u16string_view path) {
    if (front.size() < kHeaderFront)
        refuse(Error::Kind::NotADatabase, path,
               front.empty() ? "is empty, not an Access database" : "is too short for an Access database");
    FileHeader header;
    header.dialect = dialectOf(front, path);

    std::array<std::byte, kHeaderFront> plain{};
    std::copy_n(front.begin(), kHeaderFront, plain.begin());
    applyMask(plain, header.dialect == Dialect::Jet3 ? kJet3MaskedBytes : kMask.size());
    if (load32(&plain[kKeyOffset]) != 0)
        refuse(Error::Kind::Encrypted, path, "is encrypted; take the encryption off in Access and try again");
    if (hasPassword(plain, header.dialect))
        refuse(Error::Kind::PasswordProtected, path,
               "is protected by a database password; take the password off in Access and try again");

    if (const std::uint16_t codePage = load16(&plain[kCodePageOffset]); codePage != 0)
        header.codePage = codePage;
    if (header.dialect != Dialect::Jet3) {
        header.sortOrder = {load16(&plain[kSortOrderOffset]), load8(&plain[kSortOrderOffset + 3])};
        header.standardMaps = RowId::unpack(load32(&plain[kMapOffset])) == kGlobalMap;
    }
    return header;
}

void writeFileHeader(std::span<std::byte> page, std::uint16_t codePage, SortOrder sortOrder) {
    store32(page.data(), kMagic);
    std::memcpy(&page[kNameOffset], kJetName.data(), kJetName.size());
    store32(&page[kVersionOffset], 1);
    store32(&page[kMapOffset], kGlobalMap.packed());
    store32(&page[kPendingMapOffset], RowId{kGlobalMap.page, 1}.packed());
    for (std::uint32_t table = 0; table < 4; ++table)
        store32(&page[kSystemTablesOffset + std::size_t{4} * table], 2 + table);
    store16(&page[kCodePageOffset], codePage);
    for (std::size_t at = 0; at < kPasswordBytes; at += 4)
        store32(&page[kPasswordOffset + at], passwordMask(kCreationDate));
    store32(&page[kBuildOffset], kBuild);
    store16(&page[kSortOrderOffset], sortOrder.lcid);
    store8(&page[kSortOrderOffset + 3], sortOrder.version);
    store64(&page[kDateOffset], std::bit_cast<std::uint64_t>(kCreationDate));
    applyMask(page, kMask.size());

    store32(&page[0x98], 0x654);
    std::memcpy(&page[0x9C], "4.0", 4);
    store16(&page[kCommitOffset], 0x0101);
    for (std::size_t at = kCommitOffset + 2; at < kPageSize; at += 2)
        store16(&page[at], 0x0100);
}

} // namespace kelb::jet
