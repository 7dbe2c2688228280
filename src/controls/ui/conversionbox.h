#pragma once

#include "naming/conversion.h"

#include <QWidget>

class QCheckBox;
class QComboBox;

namespace ravlin {

class Captions;

/// A conversion pair as the user sees it: the check box `op4` and the list `ccase` beside it, whose entries bear their
/// modes as item data. Starts as the choice of a first start.
class ConversionBox : public QWidget
{
    Q_OBJECT

public:
    explicit ConversionBox(const ConversionPair &pair, QWidget *parent = nullptr);

    void applyCaptions(const Captions &captions);

    ConversionChoice choice() const;
    void setChoice(ConversionChoice choice);
    QString apply(const QString &text) const { return applyConversion(m_pair.kind, choice(), text); }

    QCheckBox *checkBox() const { return m_checkBox; }
    QComboBox *list() const { return m_list; }

private:
    ConversionPair m_pair;
    QCheckBox *m_checkBox;
    QComboBox *m_list;
};

} // namespace ravlin
