// SPDX-License-Identifier: GPL-3.0-or-later
// What the working modes remember from run to run is restored unchanged, under the keys of the settings.

#include "core/app/settings.h"
#include "core/naming/sessionchoices.h"

#include <QTemporaryDir>
#include <QTest>

using namespace ravlin;

class TestSessionChoices : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_folder;
    QString path() const { return m_folder.filePath(QStringLiteral("ravlin.ini")); }

private Q_SLOTS:
    void init() { QFile::remove(path()); }

    void anEmptyStoreChoosesTheSecondModeAndNoConversion()
    {
        const SessionChoices choices = SessionChoices::restored(Settings(path()));
        QCOMPARE(choices.renameMode, 2);
        QCOMPARE(choices.renamePattern, QString());
        for (const ConversionChoice &choice : choices.conversions) {
            QVERIFY(!choice.on);
            QCOMPARE(choice.index, 1);
        }
    }

    void everythingButTheSingleFileConversionComesBack()
    {
        Settings settings(path());
        SessionChoices choices;
        choices.renameMode = 3;
        choices.renamePattern = QStringLiteral("%1 - %2, %3");
        choices.conversions = {{{true, 0}, {true, 2}, {true, 0}, {true, 1}, {false, 0}}};
        choices.store(settings);
        QVERIFY(settings.save());
        const SessionChoices restored = SessionChoices::restored(Settings(path()));
        QCOMPARE(restored.renameMode, 3);
        QCOMPARE(restored.renamePattern, choices.renamePattern);
        QVERIFY(restored.conversions[0].on && restored.conversions[0].index == 0);
        QVERIFY(restored.conversions[1].on && restored.conversions[1].index == 2);
        // Ticking op4(2) in one run does not survive a restart; ticking op4(3) does.
        QVERIFY(!restored.conversions[2].on);
        QVERIFY(restored.conversions[3].on && restored.conversions[3].index == 1);
        QVERIFY(!restored.conversions[4].on);
    }

    void noModeChosenIsWrittenAsEmptyText()
    {
        Settings settings(path());
        settings.write(settingskey::Rename, QStringLiteral("3"));
        SessionChoices choices;
        choices.renameMode = 0;
        choices.store(settings);
        QCOMPARE(settings.read(settingskey::Rename), QString());
    }

    void aStoredModeThatIsNoneOfTheThreeChoosesNone()
    {
        Settings settings(path());
        settings.write(settingskey::Rename, QStringLiteral("7"));
        QCOMPARE(SessionChoices::restored(settings).renameMode, 0);
    }
};

QTEST_GUILESS_MAIN(TestSessionChoices)
#include "tst_sessionchoices.moc"
