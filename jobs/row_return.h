#pragma once

#include "ado/connection.h"
#include "jobs/context.h"
#include "jobs/trash_record.h"

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace kelb::jobs {

/// Puts deleted rows of one run back into their tables, with the autonumbers that they had and, where nothing has taken
/// it since, to the place that they had. Every row is announced first; nothing that is in a table is changed.
class RowReturn {
public:
    /// What to think of a row of a table without autonumber that is there already, in every field.
    enum class Alike {
        IsAnother, ///< tables may hold equal rows
        IsThisOne, ///< a kill came before its deletion, or after its return
    };
    RowReturn(Context& context, Alike alike) : context_(context), alike_(alike) {}

    /// Announces a row.
    void expect(const TrashedRow& row);
    /// Looks through the tables of the announced rows: which are there?
    void look();

    enum class Outcome { PutBack, AlreadyThere, NumberTaken, NoTable };
    /// Throws ado::Error and RowLineError when the table does not take the row.
    Outcome put(const TrashedRow& row);
    /// Commits what is due; to be called once a row.
    void flushIfDue();
    /// Commits and closes. Throws ado::Error.
    void close();

    /// The tables that cannot be opened, with the reason and the number of their rows.
    std::vector<std::string> faults() const;

private:
    using Hash = std::size_t; ///< of a row's line
    struct Table {
        std::u16string database, name;
        std::optional<std::string> fault; ///< why it cannot be opened
        std::size_t announced = 0;
        std::vector<std::uint32_t> places; ///< of the announced rows, until look()
        std::unique_ptr<ado::Recordset> rows;
        std::optional<std::size_t> autonumber; ///< field
        /// By autonumber: the hash of the row that has it, none while it is free.
        std::unordered_map<std::int32_t, std::optional<Hash>> numbers;
        std::unordered_map<Hash, std::size_t> alike; ///< how many equal rows are in a table without autonumber
    };
    Table& tableOf(const TrashedRow& row);
    void open(Table& table);
    void lookThrough(Table& table) const;

    Context& context_;
    Alike alike_;
    std::map<std::u16string, ado::Connection> connections_; ///< by database; before the tables, which are closed first
    std::map<std::pair<std::u16string, std::u16string>, Table> tables_;
};

} // namespace kelb::jobs
