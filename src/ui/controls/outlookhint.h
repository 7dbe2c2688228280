// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/tags/store/saveoutlook.h"
#include "ui/controls/pagecontext.h"

#include <QTimer>

#include <functional>

class QWidget;

namespace ravlin {

class PlainLabel;

/// What a page's hint says of the coming save beside the number of its files (see SaveOutlook). It is found out in the
/// background, a moment after the last change, while the page can be seen.
class OutlookHint : public QObject
{
    Q_OBJECT

public:
    /// What the page's button would save if it were pressed now.
    struct Save
    {
        QStringList paths;
        OutlookReader::Prepare prepare;
    };

    /// Owned by the page.
    OutlookHint(const PageContext &context, std::function<Save()> asked, QWidget *page);

    /// Something was typed, ticked or selected, or the tag-save mode is another.
    void refresh();
    /// Before files are written. Call refresh() afterwards.
    void stop();
    /// After stop(), on the thread that writes: some file systems of Windows don't replace a file that is being read.
    void waitForFile() { m_reader.waitForFile(); }

    /// The hint followed by what there is to tell.
    QString behind(const QString &hint) const;
    /// Shows a hint; in bold if more than one file is selected.
    void showIn(PlainLabel &label, const QString &hint) const;

    bool eventFilter(QObject *watched, QEvent *event) override;

Q_SIGNALS:
    void changed();

private:
    void look();
    void take(const SaveOutlook &outlook);

    PageContext m_context;
    std::function<Save()> m_asked;
    QWidget *m_page;
    SaveOutlook m_outlook;
    bool m_isOneFile = false;
    QTimer m_delay;
    OutlookReader m_reader;
};

} // namespace ravlin
