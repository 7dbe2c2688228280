// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/app/texttable.h"
#include "core/files/operations/transfer.h"

#include <QDialog>

class QCheckBox;
class QHBoxLayout;

namespace ravlin {

class Captions;

/// Asks what to do about a file or folder whose new name is taken, for this one or for all that follow. Closing the
/// window answers Stop with result() Rejected, by which a caller can tell that the user wants nothing of it all.
class ClashDialog : public QDialog
{
    Q_OBJECT

public:
    /// For renaming. takenName: the name that exists. presentName: that of the file which is to get it. question: with
    /// places for both.
    ClashDialog(const Captions &captions, const QString &takenName, const QString &presentName, QWidget *parent,
        Text question = Text::ClashQuestion);
    /// For copying and moving. Offers to replace where that is possible.
    ClashDialog(const Captions &captions, const Clash &clash, QWidget *parent);

    /// Shows the window and waits for the user.
    ClashDecision decide();

private:
    void arrange(const Captions &captions, const QString &question);
    void addButton(const QString &suffix, const QString &text, ClashAnswer answer);

    QCheckBox *m_forAll;
    QHBoxLayout *m_buttons;
    ClashAnswer m_answer = ClashAnswer::Stop;
};

} // namespace ravlin
