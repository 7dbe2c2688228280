// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QMessageBox>

namespace ravlin {

/// The message box that the whole program uses. Shows all its texts as plain text, made fit by shownLines().
class MessageBox : public QMessageBox
{
    Q_OBJECT

public:
    MessageBox(
        Icon icon, const QString &title, const QString &text, StandardButtons buttons, QWidget *parent = nullptr);

    void setText(const QString &text);
    /// The informative text.
    void setFurtherText(const QString &text);
    void setDetailedText(const QString &text);

private:
    void makeLabelsPlain();
};

} // namespace ravlin
