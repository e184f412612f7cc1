#pragma once

#include <QWidget>

#include <functional>
#include <string>

namespace kelb::app {

class JobContexts;
class PathField;
class UserDialogs;

/// The tab "结果": a destination table as its readers will see it, article by article.
class ResultsBrowser final : public QWidget {
public:
    /// What the tab works on; everything outlives it.
    struct Parts {
        JobContexts& contexts;
        UserDialogs& dialogs;
        std::function<std::u16string()> destination; ///< `Text3`: shown while the tab's own field is empty
    };
    explicit ResultsBrowser(Parts parts);

protected:
    void showEvent(QShowEvent* event) override;

private:
    Parts parts_;
    PathField& path_;
};

} // namespace kelb::app
