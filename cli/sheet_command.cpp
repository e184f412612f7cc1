#include "cli/commands.h"
#include "cli/db_command.h"
#include "platform/utf8.h"
#include "store/ClsReadExel.h"

#include <iostream>

namespace kelb::cli {
namespace {

class SheetCommand final : public Command {
public:
    explicit SheetCommand(CLI::App& kelb)
        : Command(kelb.add_subcommand("sheet", "Print the rows of an Excel sheet (.xls)")),
          format_(declared(), FormatOption::Choices::All) {
        declared()
            .add_option("FILE", file_, "The workbook, an .xls file of Excel 5 to 2003")
            ->required()
            ->type_name("");
        declared().add_option("--sheet", sheet_, "Name of the sheet, in any letter case [sheet1]")->type_name("NAME");
        declared().footer("The first row names the columns; one without a name is called F and its number. The result\n"
                          "of a formula is printed as it was when the workbook was saved; yes/no values are 1 and 0.\n"
                          "Example:\n"
                          "  kelb sheet models.xls --format csv");
    }

    int run(Program& program) override {
        store::ClsReadExel reader(program.context().databases());
        ado::Recordset rows = reader.Read_Excel(platform::fromUtf8(file_), platform::fromUtf8(sheet_));
        writeRows(rows, format_.chosen(), std::cout);
        return kDone;
    }

private:
    std::string file_;
    std::string sheet_ = platform::toUtf8(store::ClsReadExel::kSheet);
    FormatOption format_;
};

} // namespace

CommandPointer makeSheet(CLI::App& kelb) {
    return std::make_unique<SheetCommand>(kelb);
}

} // namespace kelb::cli
