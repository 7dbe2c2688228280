// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/naming/conversion.h"

#include <QWidget>

class QCheckBox;
class QComboBox;

namespace ravlin {

class Captions;

/// The controls of a conversion pair: the check box `op4` and the list `ccase` beside it, whose entries carry their
/// modes as item data. Starts with the choice of a first start.
class ConversionBox : public QWidget
{
    Q_OBJECT

public:
    explicit ConversionBox(const ConversionPair &pair, QWidget *parent = nullptr);

    void applyCaptions(const Captions &captions);

    ConversionChoice choice() const;
    void setChoice(ConversionChoice choice);
    QString apply(const QString &text) const { return applyConversion(m_pair.kind, choice(), text); }

    /// One tooltip for both controls.
    void setPairToolTip(const QString &text);

    QCheckBox *checkBox() const { return m_checkBox; }
    QComboBox *list() const { return m_list; }
    /// Both, in Tab order.
    QList<QWidget *> controls() const;

private:
    ConversionPair m_pair;
    QCheckBox *m_checkBox;
    QComboBox *m_list;
};

} // namespace ravlin
