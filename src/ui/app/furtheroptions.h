// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/app/programstate.h"

#include <QWidget>

#include <array>

class QCheckBox;
class QComboBox;
class QGroupBox;

namespace ravlin {

class Captions;
class HistoryBox;
class PlainLabel;

namespace history {
class History;
}

/// The second page of the options dialog: how tags are written, what a double click does, which columns the file list
/// shows, and what the history may take. The dialog stores the choices.
class furtheroptions : public QWidget
{
    Q_OBJECT

public:
    /// captions and history outlive the page.
    furtheroptions(const Captions &captions, history::History &history, QWidget *parent = nullptr);

    void show(const FurtherOptions &options);
    FurtherOptions choices() const;
    /// Keeps choices that are not saved yet.
    void applyCaptions();

private:
    void createControls();
    void createLayout();

    const Captions &m_captions;
    FurtherOptions m_given; ///< to show()
    QGroupBox *m_writing = nullptr;
    PlainLabel *m_versionLabel = nullptr;
    QComboBox *m_version = nullptr;
    QCheckBox *m_keepTimes = nullptr;
    QGroupBox *m_list = nullptr;
    PlainLabel *m_clickLabel = nullptr;
    QComboBox *m_click = nullptr;
    PlainLabel *m_columnsLabel = nullptr;
    std::array<QCheckBox *, 8> m_columns{}; ///< chcolumn_0 to chcolumn_7
    HistoryBox *m_history = nullptr;
};

} // namespace ravlin
