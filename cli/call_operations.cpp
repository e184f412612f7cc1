#include "cli/call_operations.h"

#include <unordered_map>

namespace kelb::cli {

namespace {

CallAnswer listOperations(CallObjects&, const CallArguments&) {
    Json list = Json::array();
    for (const CallOperation& operation : callOperations()) {
        Json arguments = Json::array();
        for (const Argument& argument : operation.arguments) {
            arguments.push_back(argument.name);
        }
        list.push_back({{"op", operation.name}, {"args", arguments}, {"out", operation.out}});
    }
    return {std::move(list), {}};
}

std::vector<CallOperation> processOperations() {
    return {
        {"reset",
         {},
         {},
         [](CallObjects& objects, const CallArguments&) {
             objects.reset();
             return CallAnswer();
         }},
        {"list", {}, {}, listOperations},
        {"setMarkers",
         {"titleStart", "titleEnd", "contentStart", "contentEnd"},
         {},
         [](CallObjects& objects, const CallArguments& given) {
             objects.setMarkers({given.text(0), given.text(1), given.text(2), given.text(3)});
             return CallAnswer();
         }},
        {"setUserNames",
         {{"names", ArgumentKind::Texts}},
         {},
         [](CallObjects& objects, const CallArguments& given) {
             objects.setUserNames(extract::UserNames(given.texts(0)));
             return CallAnswer();
         }},
        {"setSiteName",
         {"siteName"},
         {},
         [](CallObjects& objects, const CallArguments& given) {
             objects.setSiteName(given.text(0));
             return CallAnswer();
         }},
    };
}

} // namespace

std::vector<CallOperation> joined(std::initializer_list<std::vector<CallOperation>> chapters) {
    std::vector<CallOperation> all;
    for (const std::vector<CallOperation>& chapter : chapters) {
        all.insert(all.end(), chapter.begin(), chapter.end());
    }
    return all;
}

const std::vector<CallOperation>& callOperations() {
    static const std::vector<CallOperation> operations =
        joined({processOperations(), rewriteOperations(), extractOperations(), articleOperations(),
                templateOperations(), siteOperations(), segmentOperations(), settingsOperations()});
    return operations;
}

const CallOperation* findCallOperation(std::string_view name) {
    static const auto byName = [] {
        std::unordered_map<std::string_view, const CallOperation*> table;
        for (const CallOperation& operation : callOperations()) {
            table.emplace(operation.name, &operation);
        }
        return table;
    }();
    const auto found = byName.find(name);
    return found == byName.end() ? nullptr : found->second;
}

} // namespace kelb::cli
