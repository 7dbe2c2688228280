// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/naming/patternhistory.h"

#include <QComboBox>

namespace ravlin {

class Settings;

/// A box for a pattern: free text, with a drop-down list of used patterns, most recent first.
class PatternBox : public QComboBox
{
    Q_OBJECT

public:
    /// name: its object name. The settings, which hold the list, outlive the box.
    PatternBox(const QString &name, QStringView historyName, Settings &settings, QWidget *parent = nullptr);

    QString text() const { return currentText(); }
    void setText(const QString &text) { setEditText(text); }
    /// Appends a placeholder, wherever the cursor is.
    void append(const QString &placeholder);
    /// Moves the text, which is being used, to the front of the list. Settings::save() writes it to the file.
    void remember();
    /// Shows the list as the settings have it now. The text stays.
    void refresh();

    /// The accessible name of the box and its text.
    void setName(const QString &accessibleName);

private:
    void offer();

    Settings &m_settings;
    QStringView m_historyName;
    PatternHistory m_history;
};

} // namespace ravlin
