// gumbo_text PAGES OUT: all text of every page of a folder but scripts, styles and comments: the program that one
// writes in an hour over an HTML parser. g++ -O2 -std=c++20 gumbo_text.cpp -lgumbo
#include <gumbo.h>
#include <iconv.h>

#include <bit>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

namespace {

/// From code page 936; bytes that are none of it are left out.
std::string toUtf8(iconv_t converter, std::string page) {
    std::string text(page.size() * 2, '\0'); // two bytes become three at most
    char* in = page.data();
    char* out = text.data();
    std::size_t inLeft = page.size(), outLeft = text.size();
    while (iconv(converter, &in, &inLeft, &out, &outLeft) == static_cast<std::size_t>(-1) && inLeft > 0) {
        ++in;
        --inLeft;
    }
    text.resize(text.size() - outLeft);
    return text;
}

bool isBlock(GumboTag tag) {
    switch (tag) {
    case GUMBO_TAG_BR:
    case GUMBO_TAG_P:
    case GUMBO_TAG_DIV:
    case GUMBO_TAG_LI:
    case GUMBO_TAG_TR:
    case GUMBO_TAG_TD:
    case GUMBO_TAG_H1:
    case GUMBO_TAG_H2:
        return true;
    default:
        return false;
    }
}

void appendText(const GumboNode& node, std::string& text) {
    if (node.type == GUMBO_NODE_TEXT || node.type == GUMBO_NODE_WHITESPACE) {
        text += node.v.text.text;
    }
    if (node.type != GUMBO_NODE_ELEMENT || node.v.element.tag == GUMBO_TAG_SCRIPT ||
        node.v.element.tag == GUMBO_TAG_STYLE) {
        return;
    }
    const GumboVector& children = node.v.element.children;
    for (unsigned i = 0; i < children.length; ++i) {
        appendText(*static_cast<const GumboNode*>(children.data[i]), text);
    }
    if (isBlock(node.v.element.tag)) {
        text += '\n';
    }
}

std::string visibleText(const std::string& page) {
    GumboOutput* parsed = gumbo_parse_with_options(&kGumboDefaultOptions, page.data(), page.size());
    std::string text;
    appendText(*parsed->root, text);
    gumbo_destroy_output(&kGumboDefaultOptions, parsed);
    return text;
}

void convertFolder(const std::filesystem::path& pages, const std::filesystem::path& out) {
    const iconv_t converter = iconv_open("UTF-8", "CP936");
    if (std::bit_cast<std::intptr_t>(converter) == -1) {
        throw std::runtime_error("iconv knows no code page 936");
    }
    for (const auto& entry : std::filesystem::directory_iterator(pages)) {
        if (entry.path().extension() == ".htm") {
            std::ifstream file(entry.path(), std::ios::binary);
            const std::string page{std::istreambuf_iterator<char>(file), {}};
            std::ofstream(out / entry.path().stem().concat(".txt"), std::ios::binary)
                << visibleText(toUtf8(converter, page));
        }
    }
    iconv_close(converter);
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fputs("usage: gumbo_text PAGES OUT\n", stderr);
        return 2;
    }
    try {
        convertFolder(argv[1], argv[2]);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "gumbo_text: %s\n", error.what());
        return 1;
    }
}
