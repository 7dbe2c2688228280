// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/naming/patternhistory.h"

#include <QComboBox>

namespace ravlin {

class Settings;

/// A box for a pattern: free text, with a drop-down list of the patterns used before, the last one first.
class PatternBox : public QComboBox
{
    Q_OBJECT

public:
    /// name: its object name. The settings, where the list lives, outlive the box.
    PatternBox(const QString &name, QStringView historyName, Settings &settings, QWidget *parent = nullptr);

    QString text() const { return currentText(); }
    void setText(const QString &text) { setEditText(text); }
    /// Puts a placeholder at the end of the text, wherever the cursor is.
    void append(const QString &placeholder);
    /// The text is being used: it comes first in the list. Takes effect for the settings' file with Settings::save().
    void remember();
    /// Shows the list as the settings have it by now. The text stays.
    void refresh();

    /// For the box and its text.
    void setName(const QString &accessibleName);

private:
    void offer();

    Settings &m_settings;
    QStringView m_historyName;
    PatternHistory m_history;
};

} // namespace ravlin
