#pragma once

#include "ado/value.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

/// Statements as they were written: names are not looked up yet.
namespace kelb::ado {

enum class Operator : std::uint8_t {
    Constant,
    Column,
    And, ///< two operands or more, as Or
    Or,
    Not,
    Equal,
    NotEqual,
    Less,
    LessEqual,
    Greater,
    GreaterEqual,
    Like,
    In,      ///< the tested value, then the list
    Between, ///< value, low, high
    IsNull,
    Add,
    Subtract,
    Multiply,
    Divide,
    Concatenate,
    Negate
};

/// NOT LIKE, NOT IN, NOT BETWEEN and IS NOT NULL are Not over the plain form.
struct Expression {
    Operator op = Operator::Constant;
    std::size_t position = 0;         ///< in the statement, from 0
    Value constant;                   ///< Constant
    std::u16string table, column;     ///< Column; `table` is "" when none was written
    std::vector<Expression> operands; ///< all others
};

struct TableName {
    std::u16string name;
    std::u16string alias; ///< "" when none
};

struct ColumnName {
    std::u16string table, name;
    std::size_t position = 0;
};

struct SelectStatement {
    struct Item {
        ColumnName column;  ///< name "" : every column
        std::u16string as;  ///< name of the field, "" when none was written
        bool count = false; ///< COUNT(*)
    };
    struct Order {
        ColumnName column;
        bool ascending = true;
    };
    std::optional<std::size_t> top;
    std::vector<Item> items;
    TableName table;
    std::optional<Expression> where;
    std::vector<Order> order;
};

struct Assignment {
    ColumnName column;
    Expression value;
};

struct UpdateStatement {
    TableName table;
    std::vector<Assignment> assignments;
    std::optional<Expression> where;
};

struct DeleteStatement {
    TableName table;
    std::optional<Expression> where;
};

struct InsertStatement {
    std::u16string table;
    std::vector<ColumnName> columns; ///< empty: all, in their order
    std::variant<std::vector<Expression>, SelectStatement> source;
};

/// A column as CREATE TABLE and ALTER TABLE … ADD describe it.
struct ColumnDefinition {
    std::u16string name;
    std::u16string type; ///< as written
    std::size_t typePosition = 0;
    std::optional<std::size_t> size, scale; ///< varchar(255); decimal(18, 4)
    bool identity = false, required = false, compressed = false;
};

struct IndexDefinition {
    struct Part {
        std::u16string column;
        bool ascending = true;
    };
    std::u16string name; ///< "" when none was written
    std::vector<Part> parts;
    bool unique = false, primary = false, ignoreNulls = false, disallowNulls = false;
};

struct CreateTableStatement {
    std::u16string table;
    std::vector<ColumnDefinition> columns;
    std::vector<IndexDefinition> indexes;
};

struct CreateIndexStatement {
    std::u16string table;
    IndexDefinition index;
};

/// ALTER TABLE … ADD.
struct AlterTableStatement {
    std::u16string table;
    std::vector<ColumnDefinition> columns;
    std::vector<IndexDefinition> indexes;
};

using Statement = std::variant<SelectStatement, UpdateStatement, DeleteStatement, InsertStatement, CreateTableStatement,
                               CreateIndexStatement, AlterTableStatement>;

} // namespace kelb::ado
