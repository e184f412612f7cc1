// Requests for `kelb call`, and the work that no reader of JSON lines can leave out, to measure the rest against.
//   call_bench make FILE LINES    writes short requests of the kinds that a crawl's texts need
//   call_bench json FILE          parses each line and prints it again: JSON alone
#include <nlohmann/json.hpp>

#include <array>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <random>
#include <stdexcept>
#include <string>

namespace {

using Json = nlohmann::ordered_json;

struct Kind {
    const char* operation;
    std::size_t arguments;
};
constexpr std::array<Kind, 10> kKinds{{
    {"ClsSmart.killURLText", 1},
    {"ClsSmart.blnValue", 2},
    {"ClsSmart.getPinPai", 1},
    {"ClsSmart.searchTVCode", 1},
    {"ClsSmart.replaceTVCode", 2},
    {"ClsSmart.smartReplaceTitle", 1},
    {"ClsSmart.smartGetProblem", 1},
    {"Prog_Copy.CopyRemoveHTML", 1},
    {"Cls4Discuz.killGR", 1},
    {"ClsFenCi.splitPrepare", 1},
}};

std::string sentence(std::mt19937& random) {
    static const std::array<const char*, 12> kWords{"我家的电视机",    "长虹CH-16", "开机以后", "黑屏了",
                                                    "，测电压",        "130V",      "正常。",   "换行管",
                                                    "<b>还是</b>一样", " 请教",     "行输出",   "TDA8361，"};
    std::string text;
    for (int word = 0; word < 6; ++word) {
        text += kWords[random() % kWords.size()];
    }
    return text;
}

void make(const std::string& path, long lines) {
    std::ofstream file(path, std::ios::binary);
    std::mt19937 random(20260405);
    for (long line = 0; line < lines; ++line) {
        const Kind& kind = kKinds[random() % kKinds.size()];
        Json arguments = Json::array({sentence(random)});
        if (kind.arguments == 2) {
            arguments.push_back("长虹");
        }
        file << Json{{"id", line}, {"op", kind.operation}, {"args", arguments}}.dump() << '\n';
    }
    if (!file.flush()) {
        throw std::runtime_error("cannot write " + path);
    }
}

void json(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    for (std::string line; std::getline(file, line);) {
        std::cout << Json::parse(line).dump() << '\n';
    }
}

} // namespace

int main(int count, char** given) {
    std::ios::sync_with_stdio(false);
    const std::string mode = count > 2 ? given[1] : "";
    if (mode == "make" && count == 4) {
        make(given[2], std::atol(given[3]));
    } else if (mode == "json") {
        json(given[2]);
    } else {
        std::cerr << "call_bench make FILE LINES | call_bench json FILE\n";
        return 2;
    }
    return 0;
}
