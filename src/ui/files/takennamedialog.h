// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/files/operations/transfer.h"

#include <QDialog>

#include <optional>

class QCheckBox;
class QHBoxLayout;
class QPushButton;

namespace ravlin {

class Captions;

/// Asks what shall become of a file or folder whose name is taken where it is to go: it replaces what is there (two
/// folders are put together), stays where it is, gets a numbered name, or the whole operation is called off; for this
/// one or for all further ones. To close the window is to call it off.
class TakenNameDialog : public QDialog
{
    Q_OBJECT

public:
    TakenNameDialog(const Captions &captions, const Clash &clash, QWidget *parent);

    /// Shows the window and waits for the user; nothing: called off.
    std::optional<ClashDecision> decide();

private:
    QPushButton *addButton(const char *name, const QString &text);
    void addReply(const char *name, const QString &text, ClashReply reply);

    std::optional<ClashReply> m_reply;
    QCheckBox *m_forAll;
    QHBoxLayout *m_buttons;
};

} // namespace ravlin
