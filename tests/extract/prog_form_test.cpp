#include "extract/Prog_Form.h"

#include <gtest/gtest.h>

namespace kelb::extract::Prog_Form {
namespace {

struct CodeCase {
    const char* name;
    const char16_t* text;
    const char16_t* code;
};
class ModelCode : public testing::TestWithParam<CodeCase> {};

TEST_P(ModelCode, IsTheFirstSingleByteRun) {
    EXPECT_EQ(extModelCode(GetParam().text), GetParam().code);
}

INSTANTIATE_TEST_SUITE_P(Texts, ModelCode,
                         testing::ValuesIn<CodeCase>({
                             {"in_brackets", u"(ABC123)", u"ABC123"},
                             {"in_full_width_brackets", u"（ABC123）DEF456", u"ABC123"},
                             {"behind_chinese_with_an_ending", u"长虹LC-32.pdf", u"LC-32"},
                             {"endings_in_any_case", u"AB.RARcd.zip.Bin", u"ABcd"},
                             {"an_ending_that_the_removal_makes_stays", u"AB.r.rarar", u"AB.rar"},
                             {"the_first_run_ends_the_walk", u"AB型CDEF", u""},
                             {"four_characters", u"一ABCD二", u"ABCD"},
                             {"three_are_too_few", u"ABC.zip", u""},
                             {"blanks_and_marks_belong_to_it", u"机 A-1 [x]，B", u" A-1 [x]"},
                             {"euro_is_single_byte", u"α€ABC", u"€ABC"},
                             {"none", u"电视机", u""},
                             {"empty", u"", u""},
                         }),
                         [](const auto& each) { return std::string(each.param.name); });

} // namespace
} // namespace kelb::extract::Prog_Form
