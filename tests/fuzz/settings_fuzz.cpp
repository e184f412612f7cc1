#include "app/RWIni.h"

#include "tests/fuzz/fuzz_machine.h"

/// Any bytes as the settings file.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace kelb;
    fuzz::FuzzMachine machine;
    machine.files.writeFile(u"/app/Kelb.ini", fuzz::asText(data, size));
    const app::RWIni::IniFile file(machine.files, u"/app/Kelb.ini");
    for (const std::u16string_view name : {u"", u"Setup", u"setup ", u"[", u"节"})
        for (const auto& [key, stored] : file.section(name)) {
            const std::u16string value = file.ReadIni(key, name);
            fuzz::require(value.size() <= 512, "a value fits the buffer it went through");
            fuzz::require(value == app::RWIni::ReadIni(key, name, u"", machine.files, u"/app"),
                          "a file read once and one read anew say the same");
        }
    static_cast<void>(file.ReadIni(u"missing", u""));
    return 0;
}
