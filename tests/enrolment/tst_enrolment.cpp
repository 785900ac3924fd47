#include "ScriptedProcessorClient.h"
#include "TestSupport.h"
#include "UploadsFixture.h"

#include "core/TransferFile.h"
#include "enrolment/OwnerEnrolmentDialog.h"
#include "enrolment/TenantEnrolmentDialog.h"
#include "enrolment/VendorEnrolmentDialog.h"

#include <QCheckBox>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTableView>
#include <QTest>

#include <memory>

using Answer = Prompter::Answer;

namespace {

const QString TenantNotice
    = u"Please enter 'Y' if this Tenant uses the Remitra Rent or 'N' if not. If you "
      "want to permanently DELETE this Tenant from Remitra, enter a 'D'."_qs;
const QString OwnerNotice
    = u"Please enter 'Y' if this Owner uses the Remitra Rent or 'N' if not. If you "
      "want to permanently DELETE this Owner from Remitra enter a 'D'."_qs;
const QString VendorNotice
    = u"Please enter 'Y' if this Vendor uses the Remitra Rent or 'N' if not. If you "
      "want to permanently DELETE this Vendor from Remitra, enter a 'D'."_qs;

enum class Screen { Tenants, Owners, Vendors };

struct Opened
{
    std::unique_ptr<QDialog> dialog;
    QTableView *grid = nullptr;
    int flagColumn = 0;
    int keyColumn = 0;
};

Opened open(TestSite &site, Screen screen)
{
    Opened o;
    if (screen == Screen::Tenants)
        o.dialog = std::make_unique<TenantEnrolmentDialog>(*site.state);
    else if (screen == Screen::Owners)
        o.dialog = std::make_unique<OwnerEnrolmentDialog>(*site.state);
    else
        o.dialog = std::make_unique<VendorEnrolmentDialog>(*site.state);
    o.flagColumn = screen == Screen::Tenants ? 10 : 5;
    o.keyColumn = screen == Screen::Tenants ? 2 : 0;
    o.dialog->show();
    o.grid = o.dialog->findChild<QTableView *>(u"gridACH"_qs);
    return o;
}

// The keys of the listed rows, as the grid shows them.
QStringList listedKeys(const Opened &o)
{
    QStringList keys;
    for (int r = 0; r < o.grid->model()->rowCount(); ++r)
        keys << o.grid->model()->index(r, o.keyColumn).data().toString();
    return keys;
}

void choose(QDialog *dialog, const char *list, const QString &text)
{
    auto *options = dialog->findChild<QListWidget *>(QString::fromLatin1(list));
    const auto items = options->findItems(text, Qt::MatchExactly);
    QCOMPARE(items.size(), 1);
    QTest::mouseClick(
        options->viewport(), Qt::LeftButton, {}, options->visualItemRect(items.first()).center());
    QCOMPARE(options->currentItem(), items.first());
}

// Types a flag letter as the user does: the key on the grid opens the
// editor, replacing the old value; Enter unless told to leave it open.
void typeFlag(const Opened &o, const QString &key, const QString &letter, bool enter = true)
{
    o.grid->setCurrentIndex(o.grid->model()->index(int(listedKeys(o).indexOf(key)), o.flagColumn));
    QTest::keyClicks(o.grid, letter);
    auto *editor = o.grid->findChild<QLineEdit *>(u"flagEditor"_qs);
    QVERIFY(editor);
    QCOMPARE(editor->text(), letter);
    if (enter)
        QTest::keyClick(editor, Qt::Key_Return);
    QCoreApplication::processEvents();
}

QString flagOf(TestSite &site, Screen screen, int id)
{
    const QString sql = screen == Screen::Tenants
        ? u"SELECT TACH FROM Tenants WHERE TenantID = :i"_qs
        : screen == Screen::Owners ? u"SELECT OACH FROM Owners WHERE OwnerID = :i"_qs
                                   : u"SELECT VACH FROM Vendors WHERE VenID = :i"_qs;
    return site.scalar(sql, { { u":i"_qs, id } }).toString();
}

std::shared_ptr<ScriptedProcessorClient::Script> scripted(TestSite &site)
{
    auto script = std::make_shared<ScriptedProcessorClient::Script>();
    site.state->ClientFactory = ScriptedProcessorClient::factory(script);
    return script;
}

} // namespace

class TestEnrolment : public QObject
{
    Q_OBJECT

private slots:
    void payeeListsSortAndSelectAll()
    {
        TestSite site;
        UploadsFixture::addAll(site);
        Opened owners = open(site, Screen::Owners);
        QCOMPARE(owners.dialog->findChild<QListWidget *>(u"optSortBy"_qs)->currentItem()->text(),
            u"Remitra"_qs);
        QVERIFY(owners.grid->isColumnHidden(0));
        // OACH, then last and first name: Null, " y ", D, D, N, Y...
        QCOMPARE(listedKeys(owners).join(u' '), u"11 8 10 14 12 9 7 13 15"_qs);
        choose(owners.dialog.get(), "optSortBy", u"Owner Name"_qs);
        QCOMPARE(listedKeys(owners).join(u' '), u"11 9 8 7 10 12 13 14 15"_qs);
        // Select-all honours the filter: " y " does not start with Y once its
        // first character is taken.
        choose(owners.dialog.get(), "optDisplay", u"Remitra Owners Only"_qs);
        QCOMPARE(listedKeys(owners).join(u' '), u"9 7 13 15"_qs);
        site.prompter.queueAnswer(Answer::Yes);
        QTest::mouseClick(
            owners.dialog->findChild<QCheckBox *>(u"chkSelectAll"_qs), Qt::LeftButton);
        QCOMPARE(site.prompter.titles(), QStringList { u"Owner Update"_qs });
        QCOMPARE(site.scalar(u"SELECT group_concat(OwnerID || '=' || ifnull(OACH, ''), ' ') FROM "
                             "(SELECT * FROM Owners ORDER BY OwnerID)"_qs)
                     .toString(),
            u"7=Y 8= y  9=Y 10=D 11= 12=N 13=Y 14=D 15=Y"_qs);

        Opened vendors = open(site, Screen::Vendors);
        QCOMPARE(listedKeys(vendors).join(u' '), u"4 6 5 3 2 1"_qs);
        choose(vendors.dialog.get(), "optSortBy", u"Vendor Name"_qs);
        QCOMPARE(listedKeys(vendors).join(u' '), u"3 2 1 5 4 6"_qs);
    }

    void tenantListSortsFiltersAndSearches()
    {
        TestSite site;
        UploadsFixture::addAll(site);
        Opened o = open(site, Screen::Tenants);
        // It opens on all tenants by property, the keys first.
        QCOMPARE(o.dialog->findChild<QListWidget *>(u"optDisplay"_qs)->currentRow(), 1);
        QCOMPARE(o.dialog->findChild<QListWidget *>(u"optSortBy"_qs)->currentItem()->text(),
            u"Property/Building Name"_qs);
        QCOMPARE(o.dialog->findChild<QLabel *>(u"labCount"_qs)->text(), u"Tenants listed: 10"_qs);
        QVERIFY(o.grid->isColumnHidden(0) && o.grid->isColumnHidden(1));
        QStringList captions;
        for (int c = 2; c <= 8; ++c)
            captions << o.grid->model()->headerData(c, Qt::Horizontal).toString();
        QCOMPARE(captions,
            (QStringList { u"TID"_qs, u"Owner Last"_qs, u"Owner First"_qs, u"Property Name"_qs,
                u"Rental Unit Address"_qs, u"Tenant Last"_qs, u"Tenant First"_qs }));

        const std::pair<QString, QString> sorts[] = {
            { u"Owner Name"_qs, u"T300 T100 T101 T103 T104 T108 T109 T102 T107 T110"_qs },
            { u"Rental Unit Address"_qs, u"T102 T110 T100 T101 T103 T104 T107 T108 T109 T300"_qs },
            { u"Tenant Name"_qs, u"T108 T100 T102 T104 T107 T110 T109 T103 T101 T300"_qs },
            { u"Remitra"_qs, u"T103 T300 T104 T107 T108 T100 T102 T110 T109 T101"_qs },
            { u"Property/Building Name"_qs,
                u"T100 T101 T103 T104 T108 T109 T102 T107 T300 T110"_qs },
        };
        for (const auto &[sort, order] : sorts) {
            choose(o.dialog.get(), "optSortBy", sort);
            QCOMPARE(listedKeys(o).join(u' '), order);
        }

        choose(o.dialog.get(), "optDisplay", u"Remitra Tenants Only"_qs);
        // First character, blanks removed, any case: " Y " is not listed, "y" is.
        QCOMPARE(listedKeys(o).join(u' '), u"T100 T101 T108 T109 T102 T110"_qs);
        QCOMPARE(o.dialog->findChild<QLabel *>(u"labCount"_qs)->text(), u"Tenants listed: 6"_qs);

        auto *search = o.dialog->findChild<QLineEdit *>(u"txtSearch"_qs);
        QTest::keyClicks(search, u"ash"_qs);
        QTest::keyClick(search, Qt::Key_Return);
        QCOMPARE(listedKeys(o).join(u' '), u"T102"_qs);
        choose(o.dialog.get(), "optDisplay", u"All Tenants"_qs);
        QCOMPARE(listedKeys(o).join(u' '), u"T102 T107"_qs);
        search->clear();
        QTest::keyClicks(search, u"t110"_qs);
        QTRY_COMPARE(listedKeys(o).join(u' '), u"T110"_qs);
        search->setText(u"50%"_qs);
        QTRY_COMPARE(o.grid->model()->rowCount(), 0);
    }

    void flagEdits_data()
    {
        QTest::addColumn<int>("screen");
        QTest::addColumn<QString>("key");
        QTest::addColumn<int>("id");
        QTest::addColumn<QString>("notice");
        QTest::addColumn<QString>("sentLine");
        QTest::newRow("tenant") << int(Screen::Tenants) << u"T104"_qs << 104 << TenantNotice
                                << u"|T104|Dan|Del|"_qs;
        QTest::newRow("owner") << int(Screen::Owners) << u"12"_qs << 12 << OwnerNotice
                               << u"O12|Owner|Pat Pipe|Co|"_qs;
        QTest::newRow("vendor") << int(Screen::Vendors) << u"5"_qs << 5 << VendorNotice
                                << u"V5|Vendor|No|"_qs;
    }

    // A refused letter keeps the stored flag and sends nothing; a lower-case
    // letter is stored in upper case and makes the screen send on closing.
    void flagEdits()
    {
        QFETCH(int, screen);
        QFETCH(QString, key);
        QFETCH(int, id);
        QFETCH(QString, notice);
        QFETCH(QString, sentLine);
        const Screen which = Screen(screen);
        TestSite site;
        UploadsFixture::addAll(site);
        auto script = scripted(site);
        // Closing without an edit sends nothing.
        QTest::keyClick(open(site, which).dialog.get(), Qt::Key_Escape);
        QVERIFY(script->calls.isEmpty() && site.prompter.shown().isEmpty());

        // A cell opened and left without typing is no edit: F2 then Enter on
        // a stored "y", and Enter on a blank flag, change and send nothing.
        const QString table = which == Screen::Tenants ? u"Tenants SET TACH"_qs
            : which == Screen::Owners                  ? u"Owners SET OACH"_qs
                                                       : u"Vendors SET VACH"_qs;
        const QString idField = which == Screen::Tenants ? u"TenantID"_qs
            : which == Screen::Owners                    ? u"OwnerID"_qs
                                                         : u"VenID"_qs;
        for (const QString &stored : { u"y"_qs, u""_qs }) {
            site.db().execText(u"UPDATE "_qs + table + u" = '"_qs + stored + u"' WHERE "_qs
                    + idField + u" = "_qs + QString::number(id),
                "test");
            Opened left = open(site, which);
            left.grid->setCurrentIndex(
                left.grid->model()->index(int(listedKeys(left).indexOf(key)), left.flagColumn));
            QTest::keyClick(left.grid, Qt::Key_F2);
            auto *editor = left.grid->findChild<QLineEdit *>(u"flagEditor"_qs);
            QVERIFY(editor);
            QTest::keyClick(editor, Qt::Key_Return);
            QCoreApplication::processEvents();
            QCOMPARE(flagOf(site, which, id), stored);
            QTest::keyClick(left.dialog.get(), Qt::Key_Escape);
            QVERIFY(script->calls.isEmpty() && site.prompter.shown().isEmpty());
        }

        Opened o = open(site, which);
        const int row = int(listedKeys(o).indexOf(key));
        const QString before = flagOf(site, which, id);

        typeFlag(o, key, u"x"_qs);
        QTRY_COMPARE(site.prompter.texts(), QStringList { notice });
        QCOMPARE(site.prompter.titles(), QStringList { u"Remitra Rent"_qs });
        QCOMPARE(flagOf(site, which, id), before);
        QCOMPARE(o.grid->model()->index(row, o.flagColumn).data().toString(), before);

        typeFlag(o, key, u"d"_qs);
        QCOMPARE(flagOf(site, which, id), u"D"_qs);
        QCOMPARE(o.grid->model()->index(row, o.flagColumn).data().toString(), u"D"_qs);
        QCOMPARE(site.prompter.shown().size(), 1);

        QVERIFY(script->calls.isEmpty());
        QTest::mouseClick(o.dialog->findChild<QPushButton *>(u"cmdExit"_qs), Qt::LeftButton);
        QVERIFY(!o.dialog->isVisible());
        QCOMPARE(script->calls.size(), 1);
        const QString sent = which == Screen::Tenants ? site.state->TenantUploadName
            : which == Screen::Owners                 ? site.state->OwnerUploadName
                                                      : site.state->VendorUploadName;
        const QString file = TransferFile::fromAnsi(site.fileBytes(sent));
        QVERIFY(file.contains(sentLine));
        const bool tenants = which == Screen::Tenants;
        QCOMPARE(script->calls[0].operation, tenants ? u"Transmit"_qs : u"TransmitPayees"_qs);
        QCOMPARE(script->calls[0].texts,
            (tenants ? QStringList { u""_qs, file } : QStringList { file, u""_qs, u""_qs }));
        QCOMPARE(
            site.prompter.texts().last(), u"Successful connection to Quenta Payment Services!"_qs);
    }

    void selectAllChangesOnlyListedRows()
    {
        TestSite site;
        UploadsFixture::addAll(site);
        auto script = scripted(site);
        Opened o = open(site, Screen::Tenants);
        auto *all = o.dialog->findChild<QCheckBox *>(u"chkSelectAll"_qs);
        choose(o.dialog.get(), "optDisplay", u"Remitra Tenants Only"_qs);
        const auto flags = [&] {
            return site
                .scalar(u"SELECT group_concat(TenantID || '=' || ifnull(TACH, ''), ' ') "
                        "FROM (SELECT * FROM Tenants ORDER BY TenantID)"_qs)
                .toString();
        };
        const QString original = flags();

        site.prompter.queueAnswers({ Answer::No, Answer::Yes });
        QTest::mouseClick(all, Qt::LeftButton); // checked: activate all? No.
        QCOMPARE(flags(), original);
        QCOMPARE(site.state->MsgAnswer, u"7"_qs);
        QTest::mouseClick(all, Qt::LeftButton); // unchecked: remove all? Yes.
        QCOMPARE(site.prompter.texts(),
            (QStringList { u"Are you SURE you want to change ALL Tenants to ACTIVATE REMITRA?"_qs,
                u"Are you SURE you want to REMOVE ALL Tenants from REMITRA?"_qs }));
        QCOMPARE(
            site.prompter.titles(), (QStringList { u"Tenant Update"_qs, u"Tenant Update"_qs }));
        QCOMPARE(site.state->MsgAnswer, u"6"_qs);
        // Only the listed (enrolled) tenants; 105 and 106 are outside the
        // portfolio join and " Y " is not listed.
        QCOMPARE(flags(),
            u"100=N 101=N 102=N 103= 104=D 105=Y 106=Y 107=N 108=N 109=N 110=N 300= Y "_qs);
        QCOMPARE(o.grid->model()->rowCount(), 0);

        // With a search in effect only the matching rows change.
        choose(o.dialog.get(), "optDisplay", u"All Tenants"_qs);
        auto *search = o.dialog->findChild<QLineEdit *>(u"txtSearch"_qs);
        QTest::keyClicks(search, u"Ash Flats"_qs);
        QTest::keyClick(search, Qt::Key_Return);
        site.prompter.queueAnswer(Answer::Yes);
        QTest::mouseClick(all, Qt::LeftButton);
        QCOMPARE(flags(),
            u"100=N 101=N 102=Y 103= 104=D 105=Y 106=Y 107=Y 108=N 109=N 110=N 300= Y "_qs);

        // Select-all alone is not an edit: closing sends nothing.
        o.dialog->close();
        QVERIFY(script->calls.isEmpty());
    }

    void exportWritesTheEnrolledTenants()
    {
        TestSite site;
        UploadsFixture::addAll(site);
        Opened o = open(site, Screen::Tenants);
        auto *exportButton = o.dialog->findChild<QPushButton *>(u"cmdExport"_qs);

        site.prompter.queueAnswer(Answer::No);
        QTest::mouseClick(exportButton, Qt::LeftButton);
        QVERIFY(site.fileBytes(u"RemitraExport.csv"_qs).isNull());

        site.prompter.clear();
        site.prompter.queueAnswer(Answer::Yes);
        QTest::mouseClick(exportButton, Qt::LeftButton);
        QCOMPARE(site.prompter.shown().size(), 2);
        QCOMPARE(site.prompter.shown()[0].text,
            u"This will create an export file in CSV format (comma separated values) for all "
            "Remitra tenants selected. You can use this file in Excel and Word to create a "
            "merge letter informing your Tenants of their TID login and the benefits of the "
            "Remitra service. The file name that will be created is 'RemitraExport.csv' and "
            "will be found in your Dwellix folder.\r\rDo you want to create the file now?"_qs);
        QCOMPARE(site.prompter.shown()[0].title, u"Remitra Export"_qs);
        QCOMPARE(site.prompter.shown()[1].text,
            u"Export File Created\r\rFile Name: RemitraExport.csv\r\rFile Path: "_qs
                + QDir::toNativeSeparators(site.path(u"RemitraExport.csv"_qs)));
        QCOMPARE(site.prompter.shown()[1].title, u"Dwellix Remitra Export"_qs);
        const QByteArray bytes = site.fileBytes(u"RemitraExport.csv"_qs);
        QFile expected(testData(u"uploads/export.csv"_qs));
        QVERIFY(expected.open(QIODevice::ReadOnly));
        QCOMPARE(bytes, expected.readAll());
        // The comma in the unit address makes a line of 12 values.
        QCOMPARE(bytes.split('\n')[1].count(','), 11);
    }

    void exportSavesTheFlagBeingTyped()
    {
        TestSite site;
        UploadsFixture::addAll(site);
        Opened o = open(site, Screen::Tenants);
        typeFlag(o, u"T102"_qs, u"Y"_qs, false);
        site.prompter.queueAnswer(Answer::Yes);
        QTest::mouseClick(o.dialog->findChild<QPushButton *>(u"cmdExport"_qs), Qt::LeftButton);
        QCOMPARE(
            site.scalar(u"SELECT TACH FROM Tenants WHERE TenantID = 102"_qs).toString(), u"Y"_qs);
        QVERIFY(site.fileBytes(u"RemitraExport.csv"_qs)
                    .contains("\r\nT102,Amy,Ash,Ash Flats,1 Ash,,,,,,\r\n"));
    }

    void exportRefusals()
    {
        TestSite site;
        UploadsFixture::addAll(site);
        site.db().execText(u"UPDATE Tenants SET TACH = 'y' WHERE TACH <> 'VACANT'"_qs, "test");
        site.db().execText(
            u"UPDATE Tenants SET TACH = 'N' WHERE TFirstName1 IS NOT 'VACANT'"_qs, "test");
        site.writeFile(u"RemitraExport.csv"_qs, "old");
        Opened o = open(site, Screen::Tenants);
        auto *exportButton = o.dialog->findChild<QPushButton *>(u"cmdExport"_qs);
        site.state->LoginMissing = true;
        site.prompter.queueAnswer(Answer::Yes);
        QTest::mouseClick(exportButton, Qt::LeftButton);
        QCOMPARE(site.prompter.titles().last(), u"Login Message"_qs);
        QCOMPARE(site.fileBytes(u"RemitraExport.csv"_qs), QByteArray("old"));

        site.state->LoginMissing = false;
        site.prompter.queueAnswer(Answer::Yes);
        QTest::mouseClick(exportButton, Qt::LeftButton);
        QCOMPARE(site.prompter.texts().last(),
            u"There are no Remita tenants selected. No export file was created"_qs);
        QCOMPARE(site.prompter.titles().last(), u"Dwellix Remitra Export"_qs);
        QVERIFY(site.fileBytes(u"RemitraExport.csv"_qs).isNull());
    }
};

QTEST_MAIN(TestEnrolment)
#include "tst_enrolment.moc"
