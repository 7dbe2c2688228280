// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/app/pageowner.h"

#include <QList>
#include <QSet>
#include <QStringList>

#include <functional>
#include <thread>

namespace ravlin::test {

/// Stands for the window around a page: a list of files, and a record of what the page requested. Work runs on its own
/// thread, as in the window.
class FakePageOwner final : public PageOwner
{
public:
    QStringList rows;
    qsizetype current = -1;
    QSet<qsizetype> selected;
    bool answer = true; ///< to questions
    bool isBusy = false;
    std::function<void()> onRefresh = [] {};

    QStringList events; ///< every call but queries about the rows, in order
    QStringList advanced;
    QList<qsizetype> rowCounts;
    QList<history::Kind> recorded;        ///< of work that changes files
    std::optional<WorkFailures> failures; ///< of the last such work
    QString askedFurther;                 ///< what stood below the last question
    QStringList selectedNow;              ///< given to the last refresh after a renaming

    /// Does what a click on a row does.
    void click(qsizetype row)
    {
        current = row;
        selected = {row};
    }
    void selectAll()
    {
        for (qsizetype row = 0; row < rows.size(); ++row)
            selected.insert(row);
    }

    QString currentPath() const override { return current < 0 ? QString() : rows.at(current); }
    QStringList selectedPaths() const override
    {
        QStringList paths;
        for (qsizetype row = 0; row < rows.size(); ++row) {
            if (selected.contains(row))
                paths.append(rows.at(row));
        }
        return paths;
    }
    qsizetype selectedCount() const override { return selected.size(); }
    bool moveCurrent(qsizetype step) override
    {
        const qsizetype next = current + step;
        if (current < 0 || next < 0 || next >= rows.size())
            return false;
        selected.remove(current);
        selected.insert(next);
        current = next;
        return true;
    }
    void refreshList() override
    {
        events << QStringLiteral("refresh");
        onRefresh();
    }
    void refreshListAt(const QString &path, const QStringList &nowSelected) override
    {
        selectedNow = nowSelected;
        events << QStringLiteral("refresh at ") + path;
        onRefresh();
    }
    bool runWithProgress(qsizetype rowCount, const std::function<void(const ProgressReport &)> &work) override
    {
        if (isBusy)
            return false;
        events << QStringLiteral("run");
        rowCounts << rowCount;
        advanced.clear();
        std::jthread([&] { work([this](const Progress &now) { advanced << now.path; }); }).join();
        return true;
    }
    void record(history::Kind kind, const std::function<std::optional<WorkFailures>()> &work) override
    {
        if (isBusy)
            return;
        recorded << kind;
        failures = work();
    }
    bool ask(const QString &question, const QString &furtherText) override
    {
        askedFurther = furtherText;
        events << QStringLiteral("ask ") + question;
        return answer;
    }
    void showError(const QString &text) override { events << QStringLiteral("error ") + text; }
};

} // namespace ravlin::test
