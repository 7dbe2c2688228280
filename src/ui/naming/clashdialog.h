// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/files/renaming/renaming.h"

#include <QDialog>

class QCheckBox;
class QHBoxLayout;

namespace ravlin {

class Captions;

/// Asks what shall become of a file whose new name is taken: it keeps its name, it gets a numbered one, or the renaming
/// ends before it; for this file or for all further ones. To close the window is to end the renaming.
class ClashDialog : public QDialog
{
    Q_OBJECT

public:
    struct Decision
    {
        ClashAnswer answer = ClashAnswer::Stop;
        bool forAll = false;
    };

    /// takenName: the name that exists. presentName: that of the file which is to get it.
    ClashDialog(const Captions &captions, const QString &takenName, const QString &presentName, QWidget *parent);

    /// Shows the window and waits for the user.
    Decision decide();

private:
    void addButton(const char *name, const QString &text, ClashAnswer answer);

    ClashAnswer m_answer = ClashAnswer::Stop;
    QCheckBox *m_forAll;
    QHBoxLayout *m_buttons;
};

} // namespace ravlin
