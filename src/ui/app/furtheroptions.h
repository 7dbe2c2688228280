// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/app/options.h"

#include <QWidget>

#include <array>

class QCheckBox;
class QComboBox;
class QGroupBox;
class QLabel;

namespace ravlin {

class Captions;

/// The second page of the options dialog: how tags are written, what a double click does, and which columns the file
/// list shows. It shows choices and tells what the user made of them; storing them is the dialog's part.
class furtheroptions : public QWidget
{
    Q_OBJECT

public:
    /// captions outlives the page.
    explicit furtheroptions(const Captions &captions, QWidget *parent = nullptr);

    void show(const FurtherOptions &options);
    /// What is chosen now.
    FurtherOptions choices() const;
    /// What the user has chosen and not saved yet stays.
    void applyCaptions();

private:
    void createControls();
    void createLayout();

    const Captions &m_captions;
    QString m_shownColumnsText;             ///< the hidden columns' text that show() got
    QGroupBox *m_writing = nullptr;         ///< writing
    QLabel *m_versionLabel = nullptr;       ///< lversion
    QComboBox *m_version = nullptr;         ///< cversion
    QCheckBox *m_keepTimes = nullptr;       ///< chtimes
    QGroupBox *m_list = nullptr;            ///< list
    QLabel *m_clickLabel = nullptr;         ///< lclick
    QComboBox *m_click = nullptr;           ///< cclick
    QLabel *m_columnsLabel = nullptr;       ///< lcolumns
    std::array<QCheckBox *, 8> m_columns{}; ///< chcolumn_0 to chcolumn_7
};

} // namespace ravlin
