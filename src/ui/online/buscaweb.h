// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>

class QLineEdit;
class QPushButton;

namespace ravlin {

class Captions;

/// The window for the text of a new search in the CD database.
class buscaweb : public QDialog
{
    Q_OBJECT

public:
    /// text: selected in the box at first.
    buscaweb(const Captions &captions, const QString &text, QWidget *parent = nullptr);

Q_SIGNALS:
    /// The user searches for this text, which may be empty. The window closes.
    void searchRequested(const QString &text);

private:
    void search();

    QLineEdit *m_text;
    QPushButton *m_search;
};

} // namespace ravlin
