// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLabel>

namespace ravlin {

/// The label that the whole program uses. Shows every text as plain text, made fit by shownLines(): a QLabel of its own
/// accord takes a text with a tag in it for HTML, and reads the files that it names.
class PlainLabel : public QLabel
{
    Q_OBJECT

public:
    explicit PlainLabel(QWidget *parent = nullptr);
    explicit PlainLabel(const QString &text, QWidget *parent = nullptr);

    void setText(const QString &text);

    /// A word without end does not make the window as wide as itself.
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

private:
    QSize bounded(QSize hint) const;
};

} // namespace ravlin
