#include "jet/verification.h"

#include "platform/utf8.h"

#include <algorithm>

namespace kelb::jet {
namespace {

// A file of noise must not fill the memory with faults.
constexpr std::size_t kMostErrors = 1000;
constexpr std::size_t kMostWarnings = 200;

} // namespace

Verification::Verification(Database& checked)
    : database(checked), pager(checked.pager()), mapPages(0), freePages(pager.pageCount(), false), names_{"nobody"},
      owners_(pager.pageCount(), 0), ordinals_(pager.pageCount(), 0) {
    mapPages = newOwner("usage maps");
}

void Verification::report(Fault::Severity severity, PageNumber page, int slot, const std::string& text) {
    const bool isError = severity == Fault::Severity::Error;
    if ((isError ? errors_ : warnings_)++ < (isError ? kMostErrors : kMostWarnings))
        faults_.push_back({severity, page, slot, text});
}

void Verification::damage(const Error& thrown, PageNumber page, const std::string& what) {
    const auto* const corrupt = dynamic_cast<const CorruptFile*>(&thrown);
    if (corrupt == nullptr)
        return error(page, what + ": " + thrown.what());
    error(corrupt->page() == kNoPage ? page : corrupt->page(),
          what + ": at byte " + std::to_string(corrupt->offset()) + ": " + std::string(corrupt->expected()));
}

Owner Verification::newOwner(std::string name) {
    names_.push_back(std::move(name));
    return static_cast<Owner>(names_.size() - 1);
}

bool Verification::claim(PageNumber page, Owner owner) {
    if (raw(page) >= owners_.size()) {
        error(page, names_[owner] + ": a pointer leads to this page, past the end of the file");
        return false;
    }
    Owner& present = owners_[raw(page)];
    if (present != 0) {
        error(page,
              "the page should belong to one owner, it belongs to " + names_[present] + " and to " + names_[owner]);
        return false;
    }
    present = owner;
    return true;
}

PageGroup Verification::claimGroup(const std::vector<PageNumber>& members, std::string name) {
    PageGroup group{newOwner(std::move(name)), {}};
    for (const PageNumber page : members) {
        if (!claim(page, group.owner))
            continue;
        ordinals_[raw(page)] = static_cast<std::uint32_t>(group.pages.size());
        group.pages.push_back(page);
    }
    return group;
}

std::vector<Fault> Verification::takeFaults() {
    const auto note = [this](Fault::Severity severity, std::size_t found, std::size_t most, const char* what) {
        if (found > most)
            faults_.push_back({severity, kNoPage, -1, std::to_string(found - most) + " more " + what + " not listed"});
    };
    note(Fault::Severity::Error, errors_, kMostErrors, "errors");
    note(Fault::Severity::Warning, warnings_, kMostWarnings, "warnings");
    return std::move(faults_);
}

bool RowSet::add(RowId row) {
    bits_.resize(group_->pages.size() * kSlots);
    if (bits_[bit(row)])
        return false;
    bits_[bit(row)] = true;
    ++size_;
    return true;
}

bool RowSet::remove(RowId row) {
    if (!contains(row))
        return false;
    bits_[bit(row)] = false;
    --size_;
    return true;
}

const Fault* firstError(const std::vector<Fault>& faults) noexcept {
    const auto found = std::ranges::find(faults, Fault::Severity::Error, &Fault::severity);
    return found == faults.end() ? nullptr : &*found;
}

std::string tableLabel(std::u16string_view name) {
    return "table \"" + platform::toUtf8(name) + "\"";
}

std::string address(RowId row) {
    return "page " + std::to_string(raw(row.page)) + " slot " + std::to_string(row.slot);
}

} // namespace kelb::jet
