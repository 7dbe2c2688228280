// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>
#include <QStringList>

namespace ravlin {

class BatchOutcome;
class Captions;

/// Shows what an operation over many files did and, in one line each, what it did not do and why.
class OutcomeBox : public QDialog
{
    Q_OBJECT

public:
    OutcomeBox(const Captions &captions, const QString &headline, const QStringList &lines, QWidget *parent);
};

/// Shows which files of a batch the program refused to write (isRefusal), and why. Shows nothing if there is none:
/// other failures of such a batch stay silent.
void tellRefused(const Captions &captions, const QStringList &paths, const BatchOutcome &outcome, QWidget *parent);

} // namespace ravlin
