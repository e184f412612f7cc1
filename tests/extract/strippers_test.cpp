#include "extract/ClsYCleaner.h"
#include "extract/Prog_Copy.h"

#include <gtest/gtest.h>

namespace kelb::extract {
namespace {

using Text = std::u16string;

TEST(CopyRemoveHTML, DeletesEverySpan) {
    EXPECT_EQ(Prog_Copy::CopyRemoveHTML(u"a<b>c</b><br>d&nbsp;"), u"acd&nbsp;");
    EXPECT_EQ(ClsYCleaner::RemoveHTML(u"a<b\r\n<c>d>e<f"), u"ad>e<f");
}

struct ListCase {
    const char* fault;
    Text text, cleaned, remainder;
};

TEST(CopyRemoveHTML1, RemovesListedTags) {
    for (const ListCase& c : std::initializer_list<ListCase>{
             {"no tag", u"abc", u"abc", u"abc"},
             {"line breaks stay", u"a<b>c</b><br>d", u" a c<br>d", u"br>d"},
             {"the separator stands before the text in front", u"abc<p>def</P>ghi", u"\r\nabc\r\ndefghi", u"ghi"},
             {"a kept tag before a removed one is split", u"<br />x</td>", u"< br />x", u""},
             {"images go", u"a<img src=1>t", u" at", u"t"},
             {"unknown tags stay", u"<o:p>x", u"<o:p>x", u"o:p>x"},
             {"blocks go whole", u"x<script>var a=1;</script>y", u" xy", u"y"},
             {"a longer name closes a block", u"<head>a</HEADER>b", u" b", u"b"},
             {"the closing tag of a block alone", u"a</script>b", u" ab", u"b"},
             {"a block without end takes the rest", u"a<style>b<br>", u" a", u""},
             {"a closing tag without > as well", u"a<style>b</style c", u" a", u""},
             {"an open < ends the work", u"a<b>c<d", u" ac<d", u""},
             {"CR and LF end a name", u"<b\r\nc=1>x<i\nd>y", u"  xy", u"y"},
             {"nothing but a blank does", u"<b\tc>x<b/>", u"<b\tc>x<b/>", u"b/>"},
             {"an empty name stays", u"<>a</>< b>", u"<>a</>< b>", u" b>"},
             {"a name over another tag", u"<b<i>x", u"< bx", u"x"},
             {"neighbours of the list count as a name", u"a<p;B>x<a;b>", u" ax<a;b>", u"a;b>"},
             {"no half names", u"<blockquot>a<x>", u"<blockquot>a<x>", u"x>"},
             {"the list's own spelling", u"a<LAGEND>b<legend>", u" ab<legend>", u"legend>"},
             {"comments by name only", u"a<!-- <b> -->c<!--d-->", u" a -->c<!--d-->", u"!--d-->"},
         }) {
        Text text = c.text;
        EXPECT_EQ(Prog_Copy::CopyRemoveHTML1(text), c.cleaned) << c.fault;
        EXPECT_EQ(text, c.remainder) << c.fault;
    }
}

TEST(CopyRemoveHTML1, WalksHostilePagesOnce) {
    Text text = Text(2'000'000, u'<') + u'>';
    const Text page = text;
    EXPECT_EQ(Prog_Copy::CopyRemoveHTML1(text), page);

    Text blocks;
    for (int i = 0; i < 100'000; ++i) {
        blocks += u"<script></b><object>";
    }
    EXPECT_EQ(Prog_Copy::CopyRemoveHTML1(blocks), u" ") << "the first open block takes the rest";
}

TEST(RemoveHTML1, KeepsImagesOnly) {
    Text text = u"<IMG src=1><p>t";
    EXPECT_EQ(ClsYCleaner::RemoveHTML1(text), u"<\r\nIMG src=1>t");
    EXPECT_EQ(text, u"t");
    text = u"<b;img>";
    EXPECT_EQ(ClsYCleaner::RemoveHTML1(text), u"<b;img>") << "no neighbour in this list";
}

TEST(CopyRemoveHTML2, CutsAPageIntoPieces) {
    struct Case {
        const char* fault;
        Text html;
        std::vector<Text> pieces;
    };
    for (const Case& c : std::initializer_list<Case>{
             {"all rules together",
              u"<body><div>首页</div><p>甲<b>乙</b>丙<br>丁</p><script>if(a<b)x</script>戊",
              {u"首页", u"甲乙丙", u"丁", u"戊"}},
             {"line breaks in all spellings",
              u"1<BR/>2<br />3</br>4<br\tclear=all>5<Br\r\n>6",
              {u"1", u"2", u"3", u"4", u"5", u"6"}},
             {"inline tags of any case are dropped", u"a<FONT size=1>b</font><strong>c</STRONG><tt>d", {u"abcd"}},
             {"a listed tag that is not inline", u"a<a href=1>b</a>c", {u"a", u"b", u"c"}},
             {"blanks of all kinds at the ends", u"\t &nbsp;a&nbsp;b\r\n<div>\u3000<div> <div>", {u"a b", u"\u3000"}},
             {"unlisted tags are text", u"a<o:p>b<p>c", {u"a<o:p>b", u"c"}},
             {"an unlisted tag over a listed one", u"a<o <b>c", {u"a<o c"}},
             {"a < without > is text", u"a<div>1<2", {u"a", u"1<2"}},
             {"a block without end takes the rest", u"a<script>b<div>c", {u"a"}},
             {"nothing", u"<div> </div>", {}},
         }) {
        std::vector<Text> pieces{u"old"};
        EXPECT_EQ(Prog_Copy::CopyRemoveHTML2(c.html, pieces), c.pieces.size()) << c.fault;
        EXPECT_EQ(pieces, c.pieces) << c.fault;
    }
}

} // namespace
} // namespace kelb::extract
