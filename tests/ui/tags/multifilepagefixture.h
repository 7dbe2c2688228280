// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/naming/sessionchoices.h"
#include "ui/tags/multifilepage.h"
#include "ui/tags/pagefixture.h"

namespace ravlin::test {

/// The page of many files over a list of real files, and short words for its controls.
class MultiFilePageFixture : public PageFixture
{
protected:
    std::unique_ptr<MultiFilePage> m_page;

    /// A new page over an empty list.
    void start()
    {
        m_page.reset();
        startAfresh();
        m_page = std::make_unique<MultiFilePage>(context());
    }
    /// Files 1.mp3, 2.mp3 ... with every field filled, all of them selected.
    void addFiles(int count)
    {
        for (int i = 1; i <= count; ++i) {
            const QByteArray tag = id3v2(3, textFrame(3, "TIT2", QStringLiteral("title %1").arg(i)) +
                                                textFrame(3, "TPE1", QStringLiteral("artist %1").arg(i)) +
                                                textFrame(3, "TALB", QStringLiteral("album %1").arg(i)) +
                                                textFrame(3, "TYER", QString::number(1990 + i % 10)) +
                                                textFrame(3, "TRCK", QString::number(90 - i % 50)) +
                                                textFrame(3, "TCON", QStringLiteral("(52)")) +
                                                commentFrame(3, QStringLiteral("comment %1").arg(i)));
            m_owner.rows << writeFile(m_folder->path(), QStringLiteral("%1.mp3").arg(i), tag + audio());
        }
        m_owner.selectAll();
        m_owner.current = 0;
    }
    TagRecord read(qsizetype row) const { return PageFixture::read(m_owner.rows.at(row)); }
    QStringList tracks() const
    {
        QStringList tracks;
        for (qsizetype row = 0; row < m_owner.rows.size(); ++row)
            tracks << read(row).Track;
        return tracks;
    }
    template <typename Control = QWidget>
    Control *control(const char *name) const
    {
        return PageFixture::control<Control>(m_page.get(), QLatin1String(name));
    }
    void tick(const char *name, bool on = true) const
    {
        auto *box = control<QCheckBox>(name);
        if (box->isChecked() != on)
            box->click();
    }
    void setText(const char *name, const QString &text) const { control<QLineEdit>(name)->setText(text); }
    QString text(const char *name) const { return control<QLineEdit>(name)->text(); }
    void choose(const char *list, int entry) const { control<QComboBox>(list)->setCurrentIndex(entry); }
    bool isEnabled(const char *name) const { return control(name)->isEnabled(); }
    void press(const char *name) const { control<QPushButton>(name)->click(); }
};

} // namespace ravlin::test
