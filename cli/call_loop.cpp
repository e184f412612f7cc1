#include "cli/call_loop.h"

#include "cli/call_operations.h"

#include <algorithm>
#include <istream>
#include <ostream>
#include <string>

namespace kelb::cli {

namespace {

constexpr int kDeepestNesting = 100; ///< requests need three levels; an echoed id may bring more

bool refuseDeepNesting(int depth, Json::parse_event_t, const Json&) {
    if (depth > kDeepestNesting) {
        throw CallError("the request is nested too deeply");
    }
    return true;
}

Json parseRequest(const std::string& line) {
    // Parsing with an eye on the depth takes a third longer, so only a line that could be deep is watched.
    const auto opens = [](char c) { return c == '[' || c == '{'; };
    const bool mayBeDeep = std::ranges::count_if(line, opens) > kDeepestNesting;
    Json request;
    try {
        request = mayBeDeep ? Json::parse(line, refuseDeepNesting) : Json::parse(line);
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

void append(const Json& value, std::string& text) {
    text += value.dump(-1, ' ', false, Json::error_handler_t::replace);
}

/// The answer as its line. Written piece by piece: an object of them would be made only to be taken apart.
std::string answerTo(const std::string& line, CallObjects& objects) {
    Json id;
    std::string rest;
    // Whatever an operation throws belongs to this line alone and goes to whoever sent it.
    try {
        const Json request = parseRequest(line);
        if (const auto found = request.find("id"); found != request.end()) {
            id = *found;
        }
        const CallAnswer answer = carryOut(request, objects);
        if (answer.result) {
            rest += ",\"result\":";
            append(*answer.result, rest);
        }
        for (const Json& out : answer.out) {
            rest += &out == &answer.out.front() ? ",\"out\":[" : ",";
            append(out, rest);
        }
        rest += answer.out.empty() ? "" : "]";
    } catch (const std::exception& error) {
        rest = ",\"error\":";
        append(error.what(), rest);
    }
    std::string reply = "{\"id\":";
    append(id, reply);
    return reply += rest += "}\n";
}

} // namespace

int runCall(std::istream& in, std::ostream& out, const platform::Platform& platform, Flush flush) {
    CallObjects objects(platform);
    for (std::string line; std::getline(in, line);) {
        out << answerTo(line, objects);
        if (flush == Flush::EachLine) {
            out.flush();
        }
        if (!out) {
            return 1;
        }
    }
    return out.flush() ? 0 : 1;
}

} // namespace kelb::cli
