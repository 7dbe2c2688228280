// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/files/operations/fileoperations.h"
#include "ui/controls/outcomebox.h"

#include <QStringList>

namespace ravlin {

class Captions;

/// The lines that tell what an operation did not do: a path and the reason each.
QStringList outcomeLines(const OperationReport &report, const Captions &captions);
/// How many were done and how many were not.
QString outcomeHeadline(const OperationReport &report, const Captions &captions);

/// Says what an operation on files and folders did and, one by one, what it did not do and why.
class OutcomeDialog : public OutcomeBox
{
    Q_OBJECT

public:
    OutcomeDialog(const Captions &captions, const OperationReport &report, QWidget *parent);
};

} // namespace ravlin
