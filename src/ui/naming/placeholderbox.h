// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/naming/placeholders.h"

#include <QGroupBox>

#include <vector>

class QPushButton;

namespace ravlin {

class Captions;

/// A frame with the clickable labels `lt` of a pattern's placeholders.
class PlaceholderBox : public QGroupBox
{
    Q_OBJECT

public:
    /// columns: labels in a row, in the order of the table.
    PlaceholderBox(Caption title, std::span<const Placeholder> table, int columns, QWidget *parent);

    void applyCaptions(const Captions &captions);
    /// The labels, in the order of the table.
    QList<QWidget *> controls() const;

Q_SIGNALS:
    void clicked(const QString &placeholder);

private:
    Caption m_title;
    std::span<const Placeholder> m_table;
    std::vector<QPushButton *> m_labels;
};

} // namespace ravlin
