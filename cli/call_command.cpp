#include "cli/call_command.h"

#include "cli/call_operations.h"

#include <istream>
#include <ostream>
#include <string>

namespace kelb::cli {

namespace {

constexpr int kDeepestNesting = 100; ///< requests need three levels; an echoed id may bring more

Json parseRequest(const std::string& line) {
    Json request;
    try {
        request = Json::parse(line, [](int depth, Json::parse_event_t, const Json&) {
            if (depth > kDeepestNesting) {
                throw CallError("the request is nested too deeply");
            }
            return true;
        });
    } catch (const Json::parse_error& error) {
        throw CallError(std::string("the line is not JSON: ") + error.what());
    }
    if (!request.is_object()) {
        throw CallError("the line is not a JSON object");
    }
    return request;
}

CallAnswer carryOut(const Json& request, CallObjects& objects) {
    const auto op = request.find("op");
    if (op == request.end() || !op->is_string()) {
        throw CallError("\"op\" must be the name of an operation");
    }
    const CallOperation* operation = findCallOperation(op->get_ref<const std::string&>());
    if (operation == nullptr) {
        throw CallError("unknown operation " + op->dump() + "; \"list\" names them all");
    }
    static const Json kNoValues = Json::array();
    const auto args = request.find("args");
    const Json& values = args == request.end() ? kNoValues : *args;
    return operation->run(objects, CallArguments(values, operation->arguments));
}

Json answerTo(const std::string& line, CallObjects& objects) {
    Json reply{{"id", nullptr}};
    // Whatever an operation throws belongs to this line alone and goes to whoever sent it.
    try {
        const Json request = parseRequest(line);
        reply["id"] = request.value("id", Json());
        CallAnswer answer = carryOut(request, objects);
        if (answer.result) {
            reply["result"] = std::move(*answer.result);
        }
        if (!answer.out.empty()) {
            reply["out"] = std::move(answer.out);
        }
    } catch (const std::exception& error) {
        reply["error"] = error.what();
    }
    return reply;
}

} // namespace

int runCall(std::istream& in, std::ostream& out, const platform::Platform& platform) {
    CallObjects objects(platform);
    for (std::string line; std::getline(in, line);) {
        out << answerTo(line, objects).dump(-1, ' ', false, Json::error_handler_t::replace) << '\n' << std::flush;
        if (!out) {
            return 1;
        }
    }
    return 0;
}

} // namespace kelb::cli
