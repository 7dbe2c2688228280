// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>
#include <QStringList>

namespace ravlin {

class Captions;

/// Shows what an operation over many files did and, in one line each, what it did not do and why.
class OutcomeBox : public QDialog
{
    Q_OBJECT

public:
    OutcomeBox(const Captions &captions, const QString &headline, const QStringList &lines, QWidget *parent);
};

} // namespace ravlin
