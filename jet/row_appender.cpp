#include "jet/row_appender.h"

#include "jet/byte_order.h"
#include "jet/long_field.h"

#include <algorithm>
#include <utility>

namespace kelb::jet {

RowAppender::RowAppender(Database& database, Table& table)
    : database_(database), definition_(table.definition()),
      rows_(database.pager(), database.allocator(), definition_.page, definition_.ownedMap, definition_.freeMap),
      highest_(table.lastAutonumber()) {
    requireConsistent(definition_);
    for (std::size_t i = 0; i < definition_.columns.size(); ++i)
        if (definition_.columns[i].isAutonumber())
            autonumber_ = i;
}

RowId RowAppender::append(std::vector<StoredField> fields) {
    LongFields longs(definition_);
    std::vector<std::vector<std::byte>> longBytes(fields.size()); // until the record has its headers in their place
    std::size_t variable = 0;
    for (std::size_t i = 0; i < fields.size(); ++i) {
        const Column& column = definition_.columns[i];
        if (!fields[i].set || column.type == ColumnType::YesNo)
            continue;
        if (column.isLongValue()) {
            longBytes[i] = std::exchange(fields[i].bytes, {});
            longs.addStored(i, longBytes[i]);
        } else if (!column.isFixed()) {
            variable += fields[i].bytes.size();
        }
    }
    longs.fit(variable);
    if (autonumber_ && fields[*autonumber_].bytes.size() >= 4)
        highest_ = std::max(highest_, static_cast<std::int32_t>(load32(fields[*autonumber_].bytes.data())));

    Pager::Operation operation(database_.pager());
    longs.store(database_.pager(), database_.allocator(), fields);
    const RowId row = rows_.insert(buildRow(definition_, fields));
    ++appended_;
    operation.done();
    return row;
}

void RowAppender::finish() {
    Pager::Operation operation(database_.pager());
    const PageEdit head = database_.pager().edit(definition_.page);
    store32(head.data() + kRowCountOffset, appended_);
    store32(head.data() + kAutonumberOffset, static_cast<std::uint32_t>(highest_));
    operation.done();
}

} // namespace kelb::jet
