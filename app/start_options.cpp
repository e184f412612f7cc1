#include "app/start_options.h"

namespace kelb::app {

std::optional<StartOptions> readStartOptions(const QStringList& arguments, QString& fault) {
    struct WithValue {
        const char* name;
        QString StartOptions::*value;
    };
    static constexpr WithValue kWithValue[] = {
        {"--home", &StartOptions::home}, {"--ini", &StartOptions::ini}, {"--view", &StartOptions::view}};
    struct Switch {
        const char* name;
        bool StartOptions::*on;
    };
    static constexpr Switch kSwitches[] = {{"--help", &StartOptions::help},
                                           {"--version", &StartOptions::version},
                                           {"--quit-after-paint", &StartOptions::quitAfterPaint}};

    StartOptions options;
    for (qsizetype i = 0; i < arguments.size(); ++i) {
        const QString& argument = arguments[i];
        const QString name = argument.section(u'=', 0, 0);
        bool known = false;
        for (const Switch& candidate : kSwitches) {
            if (argument == QLatin1String(candidate.name)) {
                options.*candidate.on = known = true;
            }
        }
        for (const WithValue& candidate : kWithValue) {
            if (name != QLatin1String(candidate.name)) {
                continue;
            }
            if (name != argument) {
                options.*candidate.value = argument.section(u'=', 1);
            } else if (i + 1 < arguments.size()) {
                options.*candidate.value = arguments[++i];
            }
            known = !(options.*candidate.value).isEmpty();
        }
        if (!known) {
            fault = argument;
            return std::nullopt;
        }
    }
    return options;
}

} // namespace kelb::app
