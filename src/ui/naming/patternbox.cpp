// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/naming/patternbox.h"

#include "core/app/settings.h"
#include "ui/controls/making.h"

#include <QLineEdit>

#include <limits>

namespace ravlin {

namespace {

constexpr int UsefulLetters = 20; ///< a narrower box would not show a usual pattern

} // namespace

PatternBox::PatternBox(const QString &name, QStringView historyName, Settings &settings, QWidget *parent)
    : QComboBox(parent), m_settings(settings), m_historyName(historyName),
      m_history(PatternHistory::restored(historyName, settings))
{
    setObjectName(name);
    setEditable(true);
    setInsertPolicy(QComboBox::NoInsert);
    setCompleter(nullptr); // it would add the end of an old pattern to a new one
    setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    setMinimumContentsLength(UsefulLetters);
    lineEdit()->setObjectName(name + QStringLiteral("Text"));
    lineEdit()->setMaxLength(std::numeric_limits<int>::max());
    guardAgainstWheel(this);
    offer();
}

void PatternBox::append(const QString &placeholder)
{
    setText(text() + placeholder);
    lineEdit()->setCursorPosition(static_cast<int>(text().size()));
}

void PatternBox::remember()
{
    m_history.use(text());
    m_history.store(m_settings);
    offer();
}

void PatternBox::refresh()
{
    m_history = PatternHistory::restored(m_historyName, m_settings);
    offer();
}

void PatternBox::offer()
{
    const QString kept = text();
    const int cursor = lineEdit()->cursorPosition();
    clear();
    addItems(m_history.patterns());
    setCurrentIndex(static_cast<int>(m_history.patterns().indexOf(kept)));
    setText(kept);
    lineEdit()->setCursorPosition(cursor);
}

void PatternBox::setName(const QString &accessibleName)
{
    setAccessibleName(accessibleName);
    lineEdit()->setAccessibleName(accessibleName);
}

} // namespace ravlin
