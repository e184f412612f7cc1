#pragma once

#include "jet/database.h"

#include "platform/utf8.h"

#include <cstdint>
#include <map>
#include <optional>
#include <random>
#include <string>
#include <vector>

namespace kelb::kill {

/// One change of the kind that jobs make, or a save.
struct Step {
    enum class Kind { Insert, Update, Erase, AddColumn, BuildIndex, Save };
    Kind kind = Kind::Save;
    std::int32_t key = 0;
};

/// What a row holds, told by its key and how often it was changed: every value can be worked out again.
struct RowState {
    int version = 0;
    std::size_t extras = 0; ///< added columns that had been there when it was last written
    friend bool operator==(const RowState&, const RowState&) = default;
};

/// What the table must hold after so many steps.
struct Model {
    std::map<std::int32_t, RowState> rows;
    std::int32_t nextKey = 1;
    std::size_t extras = 0, indexes = 0; ///< columns and indexes added since the table was made
    std::uint64_t digest = 0;            ///< of the rows: two models are first told apart by it

    static constexpr std::size_t kMostExtras = 40, kMostIndexes = 12, kMostRows = 1500;

    Step draw(std::mt19937_64& random) const;
    void apply(const Step& step);
    void set(std::int32_t key, std::optional<RowState> state);
    bool sameContent(const Model& other) const {
        return digest == other.digest && extras == other.extras && indexes == other.indexes && rows == other.rows;
    }
};

/// The table behind a model.
class ModelTable {
public:
    explicit ModelTable(jet::Database& database) : database_(database) {}
    void create();
    /// `model`: before the step.
    void apply(const Step& step, const Model& model);
    /// What is in the file; throws std::runtime_error naming a row whose values are not those of one state.
    Model read();

private:
    jet::Table& table() { return database_.table(u"Items"); }
    jet::RowId rowOf(std::int32_t key);
    std::vector<jet::Value> valuesOf(std::int32_t key, const RowState& state);

    jet::Database& database_;
};

} // namespace kelb::kill
