// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/app/idiomas.h"
#include "core/naming/sessionchoices.h"
#include "core/tags/store/tagstore.h"
#include "support/mp3builder.h"
#include "ui/tags/fakepageowner.h"
#include "ui/tags/multifilepage.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTemporaryDir>

#include <memory>
#include <tuple>

namespace ravlin::test {

/// The page of many files over a list of real files, and short words for its controls.
class MultiFilePageFixture : public QObject
{
protected:
    std::unique_ptr<QTemporaryDir> m_folder;
    ProgramState m_state;
    TagStore m_store{m_state, platform::FileSystem::native()};
    Captions m_captions;
    FakePageOwner m_owner;
    std::unique_ptr<MultiFilePage> m_page;

    /// A new page over an empty list.
    void start()
    {
        m_page.reset();
        m_folder = std::make_unique<QTemporaryDir>();
        m_state = ProgramState{};
        m_state.freeMegabytes = 100000;
        m_captions = Captions();
        m_captions.fill();
        m_owner = FakePageOwner();
        m_page = std::make_unique<MultiFilePage>(MultiFilePageContext{m_owner, m_state, m_store, m_captions});
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
    TagRecord read(qsizetype row) const
    {
        TagRecord record;
        std::ignore = m_store.ReadTag(m_owner.rows.at(row), record);
        return record;
    }
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
        auto *found = m_page->findChild<Control *>(QLatin1String(name));
        if (!found)
            qFatal("no control %s", name);
        return found;
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
