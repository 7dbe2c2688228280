// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ui/tags/pagefixture.h"
#include "ui/tags/singlefilepage.h"

namespace ravlin::test {

/// A single-file page over a list of real files, and short words for its controls.
class SingleFilePageFixture : public PageFixture
{
protected:
    std::unique_ptr<SingleFilePage> m_page;

    /// Adds a file, which becomes the list's last row.
    QString addFile(const QString &name, const QByteArray &content = audio())
    {
        const QString path = writeFile(m_folder->path(), name, content);
        m_owner.rows << path;
        return path;
    }
    template <typename Control>
    Control *control(const char *name) const
    {
        return PageFixture::control<Control>(m_page.get(), QLatin1String(name));
    }
    QString text(const char *name) const { return control<QLineEdit>(name)->text(); }
    void setText(const char *name, const QString &text) const { control<QLineEdit>(name)->setText(text); }
    QString label(const char *name) const { return control<QLabel>(name)->text(); }
    bool isEnabled(const char *name) const { return control<QWidget>(name)->isEnabled(); }
    void press(const char *name) const { control<QPushButton>(name)->click(); }
    void clickRow(qsizetype row)
    {
        m_owner.click(row);
        m_page->ShowCurrent();
    }
    void convertBy(int entry) const
    {
        control<QCheckBox>("op4_2")->setChecked(true);
        control<QComboBox>("ccase_2")->setCurrentIndex(entry);
    }
    static QByteArray tagged(const QString &title, const QString &artist = {})
    {
        return id3v2(3, textFrame(3, "TIT2", title) + textFrame(3, "TPE1", artist)) + audio();
    }

    /// A new page over an empty list.
    void start()
    {
        m_page.reset();
        startAfresh();
        m_page = std::make_unique<SingleFilePage>(context());
    }
};

} // namespace ravlin::test
