#include "ado/sheet_provider.h"

#include "ado/environment.h"
#include "ado/error.h"
#include "ado/fixed_row_set.h"
#include "ado/jet_errors.h"
#include "ado/sheet_select.h"
#include "ado/sql_parser.h"
#include "ado/workbook.h"

#include "platform/letter_case.h"

#include <algorithm>
#include <utility>

namespace kelb::ado {

namespace {

/// All versions of the driver begin so; later ones name more endings in the parentheses.
constexpr std::u16string_view kDriver = u"Microsoft Excel Driver (*.xls";

std::u16string_view withoutDollar(std::u16string_view table) {
    return table.ends_with(u'$') ? table.substr(0, table.size() - 1) : table;
}

class SheetSession final : public Session {
public:
    SheetSession(platform::FileSystem& files, std::u16string path)
        : path_(std::move(path)),
          workbook_(during({"open the workbook", {}, path_, {}}, [&] { return Workbook(files, path_); })) {}

    /// Every cursor is the same here: rows that nobody changes.
    std::unique_ptr<RowSet> open(std::u16string_view select, CursorType /*cursor*/, LockType /*lock*/) override {
        return during({"open a record set", {}, path_, select}, [&] {
            const Statement statement = parseStatement(select);
            const auto* parsed = std::get_if<SelectStatement>(&statement);
            if (parsed == nullptr) {
                throw Error(Error::Kind::Syntax, "a record set is opened with SELECT or the name of a sheet");
            }
            const std::u16string& name = parsed->table.name;
            return openSheetSelect(std::make_shared<SheetTable>(name, workbook_.sheet(withoutDollar(name))), *parsed);
        });
    }

    std::size_t execute(std::u16string_view statement) override {
        during({"execute the statement", {}, path_, statement}, [] { throwSheetsAreOnlyRead(); });
        return 0;
    }

    std::unique_ptr<RowSet> tables() override {
        return during({"list the sheets", {}, path_, {}}, [&] {
            std::vector<std::u16string> names = workbook_.sheetNames();
            std::stable_sort(names.begin(), names.end(),
                             [](const auto& a, const auto& b) { return platform::compareNoCase(a, b) < 0; });
            std::vector<std::vector<Value>> rows;
            rows.reserve(names.size());
            for (const std::u16string& name : names) {
                rows.push_back({Value(name + u"$"), Value(std::u16string(u"TABLE"))});
            }
            return tableRowSet(std::move(rows));
        });
    }

    void beginTransaction() override {
        during({"begin a transaction", {}, path_, {}}, [] { throwSheetsAreOnlyRead(); });
    }
    void commitTransaction() override { beginTransaction(); }
    void rollbackTransaction() override { beginTransaction(); }
    void flush() override {}                            // there is nothing to save
    void flushIfDue() override {}                       // likewise
    void setCommandTimeout(int /*seconds*/) override {} // reading has a limit of its own

private:
    const std::u16string path_;
    const Workbook workbook_;
};

} // namespace

bool SheetProvider::accepts(const ConnectionString& connection) const {
    const std::u16string driver = connection.value(u"Driver");
    std::u16string_view name = driver;
    name.remove_prefix(name.starts_with(u'{') ? 1 : 0);
    return platform::equalNoCase(name.substr(0, kDriver.size()), kDriver);
}

std::unique_ptr<Session> SheetProvider::connect(const ConnectionString& connection, Environment& environment) {
    const std::u16string path = connection.value(u"DBQ");
    if (path.empty()) {
        throw Error(Error::Kind::Connection, "the connection string names no workbook (DBQ=…)");
    }
    const std::u16string mode = connection.value(u"Mode");
    auto session = std::make_unique<SheetSession>(environment.platform().files, path);
    if (platform::equalNoCase(mode, u"ReadWrite") || platform::equalNoCase(mode, u"Write")) {
        during({"open for writing the workbook", {}, path, {}}, [] { throwSheetsAreOnlyRead(); });
    }
    return session;
}

std::u16string sheetConnectionString(std::u16string_view path) {
    return u"DRIVER=Microsoft Excel Driver (*.xls);DBQ=" + std::u16string(path);
}

} // namespace kelb::ado
