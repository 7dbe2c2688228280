// SPDX-License-Identifier: GPL-3.0-or-later
// The contract of the shared state: its values at the start, and that a tag-save mode is exactly one digit from 1 to 5.

#include "core/app/programstate.h"

#include <QString>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace ravlin;

class TestProgramState : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void valuesAtTheStart();
    void modesAreExactlyOneDigit();
};

void TestProgramState::valuesAtTheStart()
{
    const ProgramState state;
    QCOMPARE(state.tagSaveMode, 2);
    QCOMPARE(state.currentFolder, QString());
    QCOMPARE(state.currentFolderAsChosen, QString());
    QCOMPARE(state.freeMegabytes, 0);
    QVERIFY(!state.cancelled);
    QCOMPARE(state.previewMode, PreviewMode::None);
}

void TestProgramState::modesAreExactlyOneDigit()
{
    for (int mode = 1; mode <= 5; ++mode)
        QCOMPARE(tagSaveModeFromText(QString::number(mode)), std::optional(mode));
    for (const QString &text :
        {QString(), u"0"_s, u"6"_s, u" 2"_s, u"2 "_s, u"02"_s, u"22"_s, u"-1"_s, u"two"_s, u"٣"_s, u"３"_s, u"²"_s})
        QVERIFY2(!tagSaveModeFromText(text), qPrintable(text));
}

QTEST_GUILESS_MAIN(TestProgramState)
#include "tst_programstate.moc"
