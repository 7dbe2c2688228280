// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStatusBar>
#include <QString>
#include <QTimer>

namespace ravlin {

class ElidedLabel;

/// The status bar `sbStatusBar` with two panels: the number of listed files, and the current file's full path. Beside
/// them stands for a few seconds what an operation reports.
class StatusPanels : public QStatusBar
{
    Q_OBJECT

public:
    explicit StatusPanels(QWidget *parent = nullptr);

    void setTexts(const QString &count, const QString &path);
    /// Shows a text beside the panels for a few seconds.
    void showPassing(const QString &text);

private:
    ElidedLabel *m_count;
    ElidedLabel *m_path;
    ElidedLabel *m_report;
    QTimer m_reportEnd;
};

} // namespace ravlin
