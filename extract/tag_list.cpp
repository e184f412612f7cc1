#include "extract/tag_list.h"

#include "platform/letter_case.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>
#include <string>

namespace kelb::extract {

namespace {

// One text of names, each between semicolons. "LAGEND" and the order at the end are kept.
constexpr std::u16string_view kListed = u";!--;!DOCTYPE;A;ACRONYM;ADDRESS;APPLET;AREA;BASE;BASEFONT;"
                                        u"BGSOUND;BIG;BLOCKQUOTE;BODY;BUTTON;CAPTION;CENTER;CITE;CODE;"
                                        u"COL;COLGROUP;COMMENT;DD;DEL;DFN;DIR;DIV;DL;DT;EM;EMBED;FIELDSET;"
                                        u"FONT;FORM;FRAME;FRAMESET;HEAD;H1;H2;H3;H4;H5;H6;HR;HTML;I;IFRAME;"
                                        u"INPUT;INS;ISINDEX;KBD;LABEL;LAYER;LAGEND;LI;LINK;LISTING;MAP;MARQUEE;"
                                        u"MENU;META;NOBR;NOFRAMES;NOSCRIPT;OBJECT;OL;OPTION;PARAM;PLAINTEXT;"
                                        u"PRE;Q;S;SAMP;SCRIPT;SELECT;SMALL;SPAN;STRIKE;STRONG;STYLE;SUB;SUP;"
                                        u"TABLE;TBODY;TD;TEXTAREA;TFOOT;TH;THEAD;TITLE;TR;TT;U;UL;VAR;WBR;XMP;"
                                        u"P;B;IMG;";
constexpr std::u16string_view kListedButImages =
    kListed.substr(0, kListed.size() - std::u16string_view(u"IMG;").size());
constexpr std::u16string_view kBlocks = u";APPLET;EMBED;FRAMESET;HEAD;NOFRAMES;NOSCRIPT;OBJECT;SCRIPT;STYLE;";

constexpr std::size_t countNames(std::u16string_view list) {
    return static_cast<std::size_t>(std::ranges::count(list, u';')) - 1;
}

template <std::size_t N>
constexpr std::array<std::u16string_view, N> sortedNames(std::u16string_view list) {
    std::array<std::u16string_view, N> names;
    for (std::u16string_view& name : names) {
        list.remove_prefix(1);
        name = list.substr(0, list.find(u';'));
        list.remove_prefix(name.size());
    }
    std::ranges::sort(names);
    return names;
}

constexpr auto kListedNames = sortedNames<countNames(kListed)>(kListed);
constexpr auto kBlockNames = sortedNames<countNames(kBlocks)>(kBlocks);
constexpr std::size_t kLongestName =
    std::ranges::max(kListedNames, {}, [](std::u16string_view name) { return name.size(); }).size();

/// Whether ";" + name + ";" stands in the list, from the sorted names wherever the name is a single one.
bool standsIn(std::u16string_view list, std::span<const std::u16string_view> names, std::u16string_view name) {
    if (name.find(u';') != name.npos) {
        // A page may bring several neighbours of the list at once (<p;b>). They do stand in it. Kept.
        return name.size() < list.size() && platform::findNoCase(list, u';' + std::u16string(name) + u';') != list.npos;
    }
    if (name.size() > kLongestName) {
        return false;
    }
    std::array<char16_t, kLongestName> upper{};
    std::ranges::transform(name, upper.begin(), platform::upper);
    return std::ranges::binary_search(names, std::u16string_view(upper.data(), name.size()));
}

} // namespace

bool isListedTag(std::u16string_view name, ImageTags images) {
    const bool withImages = images == ImageTags::Listed;
    return standsIn(withImages ? kListed : kListedButImages, kListedNames, name) &&
           (withImages || !platform::equalNoCase(name, u"IMG"));
}

bool isBlockTag(std::u16string_view name) {
    return standsIn(kBlocks, kBlockNames, name);
}

} // namespace kelb::extract
