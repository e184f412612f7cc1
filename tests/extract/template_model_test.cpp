#include "extract/template_model.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kelb::extract {
namespace {

using testing::ElementsAre;

TEST(TagName, EndsAtBracketOrBlankAndCarriesOver) {
    struct Case {
        std::u16string_view fragment, name;
        std::int32_t before, after;
    };
    const Case cases[] = {
        {u"div class=\"a\">text", u"div", 0, 4}, // the blank is nearer
        {u"/div>x y", u"/div", 0, 5},            // the bracket is nearer
        {u"BODY>", u"BODY", 9, 5},               // case is kept
        {u"!-- note -->", u"!--", 0, 4},
        {u"br", u"", 0, 0},            // nothing ends it and nothing was before
        {u"br", u"br", 5, 5},          // cut where the fragment before was, past its own end
        {u"img\tsrc", u"img\t", 5, 5}, // a tab ends nothing
        {u">text", u"", 0, 0},         // a bracket in front ends no name
        {u"> b>x", u">", 3, 2},        // the first bracket is in front, so the blank counts
        {u" a>", u" a", 0, 3},         // blank 1 is below 2, the bracket counts
        {u"", u"", 4, 4},
    };
    for (const Case& each : cases) {
        std::int32_t position = each.before;
        const std::u16string_view name = tagName(each.fragment, position);
        EXPECT_TRUE(name == each.name) << each.before;
        EXPECT_EQ(position, each.after);
    }
}

std::vector<std::u16string_view> filled(std::size_t count,
                                        std::initializer_list<std::pair<std::size_t, std::u16string_view>> set) {
    std::vector<std::u16string_view> fragments(count, u"p>");
    for (const auto& [index, text] : set) {
        fragments[index] = text;
    }
    return fragments;
}

TEST(GetSpecialIdx, LooksAt101FragmentsAtEitherEnd) {
    struct Case {
        std::size_t count, begin, end;
        bool found;
        std::int32_t outBegin, outEnd;
    };
    const Case cases[] = {
        {300, 100, 199, true, 100, 199}, // the last places of both windows
        {300, 101, 199, false, -1, 199}, // one behind the front window; the end is written all the same
        {300, 100, 198, false, 100, -1}, {300, 0, 250, false, 0, 250}, // index 0 counts as not found
        {3, 1, 2, true, 1, 2},
    };
    for (const Case& each : cases) {
        std::int32_t begin = -1, end = -1;
        const auto fragments = filled(each.count, {{each.begin, u"BoDy class=x>"}, {each.end, u"/BODY>"}});
        EXPECT_EQ(getSpecialIdx(fragments, u"body", u"/body", begin, end), each.found);
        EXPECT_EQ(begin, each.outBegin);
        EXPECT_EQ(end, each.outEnd);
    }
    std::int32_t begin = -1, end = -1;
    EXPECT_FALSE(getSpecialIdx({}, u"body", u"/body", begin, end));
    // The first one opens, the last one closes.
    EXPECT_TRUE(getSpecialIdx(filled(9, {{1, u"body>"}, {2, u"body>"}, {6, u"/body>"}, {7, u"/body>"}}), u"body",
                              u"/body", begin, end));
    EXPECT_EQ(begin, 1);
    EXPECT_EQ(end, 7);
}

TEST(BodyStart, TriesTheMarksInTheirOrder) {
    EXPECT_EQ(bodyStart(u"<html><BODY><body>"), 12U); // the small one wins wherever it stands
    EXPECT_EQ(bodyStart(u"<html><BODY>"), 6U);
    EXPECT_EQ(bodyStart(u"<HTML><html>"), 6U);
    EXPECT_EQ(bodyStart(u"<Html><Body>"), std::u16string_view::npos);
}

TEST(TemplateModel, KeepsThePageFromItsBodyOn) {
    const TemplateModel model(u"<html><head></head><body id=x><p>text</p></body></html>");
    EXPECT_THAT(model.fragments(), ElementsAre(u"", u"body id=x>", u"p>text", u"/p>", u"/body>", u"/html>"));
    EXPECT_THAT(model.names(), ElementsAre(u"", u"body", u"p", u"/p", u"/body", u"/html"));
    EXPECT_EQ(model.bodyBegin(), 1);
    EXPECT_EQ(model.bodyEnd(), 4);
    const TemplateModel without(u"no tags");
    EXPECT_THAT(without.fragments(), ElementsAre(u"no tags"));
    EXPECT_EQ(without.bodyEnd(), 0);
}

/// Model: | body | p | /p | div | /div | /body | /html: indexes 0 to 7.
TEST(TemplateModel, TakesPagesInStepFromBothEnds) {
    const TemplateModel model(u"<body><p></p><div></div></body></html>");
    struct Case {
        std::u16string_view body;
        std::size_t forward, reverse;
        std::vector<std::size_t> runs;
    };
    const Case cases[] = {
        // The same page: forward 1 to 7; back from 6 to 1, where the page's index falls below 2. Fragment 0 is never
        // met.
        {u"<body><p></p><div></div></body></html>", 7, 6, {1, 0, 0, 0, 0, 0, 0, 0}},
        // A block too many in the middle. Forward: body, p, /p fit, then h1 on div, /h1 on /div, div on /body and
        // /div on /html do not. Back: /body, /div, div fit, then /h1 on /p, h1 on p, /p on body do not, and p on the
        // empty name does, as anything.
        {u"<body><p></p><h1></h1><div></div></body></html>", 3, 4, {0, 0, 0, 0, 0, 0, 0, 1}},
        // "pre" begins with "p". Without a closing body both ends start at fragment 0: forward "" on body, "body" on
        // p, "pre" on /p; back "" on /body, and the page ends.
        {u"<body><pre>", 0, 0, {8}},
        {u"", 0, 0, {8}},
    };
    for (const Case& each : cases) {
        const Alignment found = model.align(each.body);
        EXPECT_EQ(found.forward, each.forward) << each.runs.size();
        EXPECT_EQ(found.reverse, each.reverse) << each.runs.size();
        EXPECT_EQ(found.missRuns, each.runs);
        EXPECT_EQ(found.hits.size(), 8U);
    }
}

/// Only the ends of a long page are looked at; they must be the same fragments that a whole split gives.
TEST(TemplateModel, FindsBothEndsOfALongPage) {
    const TemplateModel model(u"<body><p></p></body>");
    std::u16string page = u"<body><p></p>";
    for (int i = 0; i < 5000; ++i) {
        page += u"<i>x";
    }
    page += u"<p></p></body>";
    const Alignment found = model.align(page);
    EXPECT_EQ(found.forward, 3U); // body, p, /p; then "i" on /body
    EXPECT_EQ(found.reverse, 4U); // /body, /p, p; "i" on body does not, and anything begins with the empty name
}

} // namespace
} // namespace kelb::extract
