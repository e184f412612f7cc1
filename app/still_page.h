#pragma once

#include <QTextBrowser>

namespace kelb::app {

/// Shows HTML that comes from elsewhere: no script runs, nothing is fetched from the network or the disk (an image is
/// an empty frame), and a link leads nowhere.
class StillPage final : public QTextBrowser {
public:
    /// Characters beyond which the rest is left out: laying out a page takes a second for each million.
    static constexpr qsizetype kMost = 300'000;

    explicit StillPage(QWidget* parent = nullptr);
    /// A page of a site that was written for a white ground is shown on one, whatever the desktop's colours are.
    enum class Ground { Desktop, White };
    void showHtml(const QString& html, Ground ground);
    void showText(const QString& text);

protected:
    QVariant loadResource(int type, const QUrl& name) override;

private:
    void setGround(Ground ground);
};

} // namespace kelb::app
