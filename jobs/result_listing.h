#pragma once

#include "ado/connection.h"
#include "ado/environment.h"
#include "ado/provider.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kelb::jobs {

/// A field of a row as it is shown.
struct RowField {
    std::u16string name;
    std::u16string text; ///< "" for Null
    bool null = false;
};

/// The user tables of an Access database, in the order of names. Throws ado::Error, JobError (no Access database).
[[nodiscard]] std::vector<std::u16string> tablesOf(ado::Environment& environment, std::u16string_view database);

/// A table of articles, row by row. Which rows there are is fixed at opening (four bytes each); what they hold is read
/// when it is asked for. A row that is deleted afterwards keeps its number and is told as gone. The database stays open
/// for reading as long as the listing lives. Throws ado::Error wherever something is read.
class ResultListing {
public:
    enum class Column { Title, Body, Url, Time, Pass };
    static constexpr std::size_t kColumns = 5;
    struct Order {
        Column column = Column::Title;
        bool descending = false;
    };
    /// One line of a list.
    struct Line {
        bool gone = false;
        std::u16string title, url, time;
        std::optional<std::size_t> length; ///< characters of the body; no value without one
        std::optional<bool> pass;          ///< no value where the table has no blnPass
    };
    /// Rows beyond which an order is refused: their values would all be held in memory.
    static constexpr std::size_t kMostSorted = 200'000;

    /// Throws ado::Error, JobError (no Access database; a table without title and body).
    ResultListing(ado::Environment& environment, std::u16string_view database, std::u16string_view table,
                  std::optional<Order> order = std::nullopt);

    const std::u16string& database() const noexcept { return database_; }
    const std::u16string& table() const noexcept { return table_; }
    std::size_t count() const { return rows_->memberCount(); }
    /// The name of the field that stands for the column; no value where the table has none.
    std::optional<std::u16string> fieldOf(Column column) const;

    /// Lines asked for lately are remembered until forget().
    const Line& line(std::size_t row);
    void forget() noexcept;

    /// The column's text into `out`; false, and `out` empty, for a row that is gone, Null and a missing column.
    bool text(std::size_t row, Column column, std::u16string& out);
    /// Every field; no value for a row that is gone.
    std::optional<std::vector<RowField>> fields(std::size_t row);
    /// Where the row lies: the same place in another listing of the table is the same row, unless it was deleted and
    /// another one took its place. No value for a row that is gone.
    std::optional<std::uint32_t> place(std::size_t row);

    bool hasPass() const noexcept { return at(Column::Pass).has_value(); }
    /// Sets blnPass; on return it is on the disk. Rows that are gone are passed over; result: those that were set.
    /// After a throw some may be set. Requires hasPass().
    std::size_t setPass(std::span<const std::size_t> rows, bool pass);
    /// Adds the column blnPass. The listing begins anew, with the rows of now. False when `rows` are not the same ones
    /// any more, since others were added or deleted meanwhile.
    bool addPass(std::span<const std::size_t> rows = {});

private:
    struct Remembered {
        std::size_t row = 0;
        bool filled = false;
        Line line;
    };
    const std::optional<std::size_t>& at(Column column) const noexcept {
        return columns_[static_cast<std::size_t>(column)];
    }
    void openRows();
    bool go(std::size_t row);
    Line read(std::size_t row);
    bool current(Column column, std::u16string& out);
    void write(const std::function<void(ado::Connection&)>& change);

    ado::Environment& environment_;
    std::u16string database_, table_;
    std::optional<Order> order_;
    ado::Connection connection_;
    std::unique_ptr<ado::RowSet> rows_; ///< behind the connection, before which it goes
    std::array<std::optional<std::size_t>, kColumns> columns_;
    std::vector<Remembered> remembered_; ///< by the last digits of the row: neighbours never drive each other out
    std::u16string body_;                ///< kept for its capacity
};

} // namespace kelb::jobs
