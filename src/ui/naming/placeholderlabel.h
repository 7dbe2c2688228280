// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPushButton>

namespace ravlin {

/// A word that can be clicked, looking like a link: names a placeholder and what it stands for. Tab reaches it, the
/// blank key works as a click, and a click with the mouse leaves the keyboard focus where it is.
class PlaceholderLabel : public QPushButton
{
    Q_OBJECT

public:
    /// placeholder: two characters, as "%1".
    explicit PlaceholderLabel(const QString &placeholder, QWidget *parent = nullptr);

    const QString &placeholder() const { return m_placeholder; }
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent *event) override;
    bool event(QEvent *event) override;

private:
    QString m_placeholder;
};

} // namespace ravlin
