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

using Answer = Prompter::Answer;

namespace {

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
    o.grid = child<QTableView>(*o.dialog, "gridACH");
    return o;
}

// The keys of the listed rows, as the grid shows them.
QString listedKeys(const Opened &o)
{
    QStringList keys;
    for (int r = 0; r < o.grid->model()->rowCount(); ++r)
        keys << o.grid->model()->index(r, o.keyColumn).data().toString();
    return keys.join(u' ');
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

// Opens the flag editor on the row of `key` as the user does: with a letter
// (the key replaces the old value) or with F2; Enter unless told otherwise.
void typeFlag(const Opened &o, const QString &key, const QString &letter, bool enter = true)
{
    const int row = int(listedKeys(o).split(u' ').indexOf(key));
    o.grid->setCurrentIndex(o.grid->model()->index(row, o.flagColumn));
    if (letter.isEmpty())
        QTest::keyClick(o.grid, Qt::Key_F2);
    else
        QTest::keyClicks(o.grid, letter);
    auto *editor = child<QLineEdit>(*o.grid, "flagEditor");
    if (!letter.isEmpty())
        QCOMPARE(editor->text(), letter);
    if (enter)
        QTest::keyClick(editor, Qt::Key_Return);
    QCoreApplication::processEvents();
}

struct FlagField
{
    const char *table, *flag, *key;
};
const FlagField kFlags[] = { { "Tenants", "TACH", "TenantID" }, { "Owners", "OACH", "OwnerID" },
    { "Vendors", "VACH", "VenID" } };

// The flag of a row; with `set`, first stores that value.
QString flagOf(TestSite &site, Screen screen, int id, const std::optional<QString> &set = {})
{
    const FlagField &f = kFlags[int(screen)];
    const QString table = QLatin1String(f.table), flag = QLatin1String(f.flag);
    const QString where = u" WHERE "_qs + QLatin1String(f.key) + u" = :i"_qs;
    if (set)
        site.scalar(u"UPDATE "_qs + table + u" SET "_qs + flag + u" = :f"_qs + where,
            { { u":i"_qs, id }, { u":f"_qs, *set } });
    return site.scalar(u"SELECT "_qs + flag + u" FROM "_qs + table + where, { { u":i"_qs, id } })
        .toString();
}

QString tenantFlags(TestSite &site)
{
    return site
        .scalar(u"SELECT group_concat(TenantID || '=' || ifnull(TACH, ''), ' ') "
                "FROM (SELECT * FROM Tenants ORDER BY TenantID)"_qs)
        .toString();
}

} // namespace

class TestEnrolment : public QObject
{
    Q_OBJECT

private slots:
    void listOrders_data()
    {
        QTest::addColumn<int>("screen");
        QTest::addColumn<QString>("display"); // empty: as opened
        QTest::addColumn<QString>("sort"); // empty: as opened
        QTest::addColumn<QString>("search"); // typed, filtering as it is typed
        QTest::addColumn<QString>("keys");
        const int tenants = int(Screen::Tenants), owners = int(Screen::Owners);
        // Tenants open on all tenants by property.
        QTest::newRow("tenants opened") << tenants << QString() << QString() << QString()
                                        << u"T100 T101 T103 T104 T108 T109 T102 T107 T300 T110"_qs;
        QTest::newRow("tenants by owner")
            << tenants << QString() << u"Owner Name"_qs << QString()
            << u"T300 T100 T101 T103 T104 T108 T109 T102 T107 T110"_qs;
        QTest::newRow("tenants by unit")
            << tenants << QString() << u"Rental Unit Address"_qs << QString()
            << u"T102 T110 T100 T101 T103 T104 T107 T108 T109 T300"_qs;
        QTest::newRow("tenants by name") << tenants << QString() << u"Tenant Name"_qs << QString()
                                         << u"T108 T100 T102 T104 T107 T110 T109 T103 T101 T300"_qs;
        QTest::newRow("tenants by flag") << tenants << QString() << u"Remitra"_qs << QString()
                                         << u"T103 T300 T104 T107 T108 T100 T102 T110 T109 T101"_qs;
        // First character, blanks removed, any case: " Y " is not listed, "y" is.
        QTest::newRow("enrolled tenants") << tenants << u"Remitra Tenants Only"_qs << QString()
                                          << QString() << u"T100 T101 T108 T109 T102 T110"_qs;
        // Owners open by flag, then last and first name: Null, " y ", D, D, N, Y...
        QTest::newRow("owners opened")
            << owners << QString() << QString() << QString() << u"11 8 10 14 12 9 7 13 15"_qs;
        QTest::newRow("owners by name") << owners << QString() << u"Owner Name"_qs << QString()
                                        << u"11 9 8 7 10 12 13 14 15"_qs;
        QTest::newRow("enrolled owners")
            << owners << u"Remitra Owners Only"_qs << QString() << QString() << u"9 7 13 15"_qs;
        // A search matches any listed text, within the rows on display.
        QTest::newRow("search enrolled")
            << tenants << u"Remitra Tenants Only"_qs << QString() << u"ash"_qs << u"T102"_qs;
        QTest::newRow("search all")
            << tenants << QString() << QString() << u"ash"_qs << u"T102 T107"_qs;
        QTest::newRow("search a key")
            << tenants << QString() << QString() << u"t110"_qs << u"T110"_qs;
        QTest::newRow("search a wildcard")
            << tenants << QString() << QString() << u"50%"_qs << QString();
        QTest::newRow("vendors opened")
            << int(Screen::Vendors) << QString() << QString() << QString() << u"4 6 5 3 2 1"_qs;
        QTest::newRow("vendors by name") << int(Screen::Vendors) << QString() << u"Vendor Name"_qs
                                         << QString() << u"3 2 1 5 4 6"_qs;
    }
    void listOrders()
    {
        QFETCH(int, screen);
        QFETCH(QString, display);
        QFETCH(QString, sort);
        TestSite site;
        UploadsFixture::addAll(site);
        Opened o = open(site, Screen(screen));
        if (!display.isEmpty())
            choose(o.dialog.get(), "optDisplay", display);
        if (!sort.isEmpty())
            choose(o.dialog.get(), "optSortBy", sort);
        QFETCH(QString, search);
        QTest::keyClicks(child(*o.dialog, "txtSearch"), search);
        QFETCH(QString, keys);
        QTRY_COMPARE(listedKeys(o), keys);
        if (screen == int(Screen::Tenants))
            QCOMPARE(child<QLabel>(*o.dialog, "labCount")->text(),
                u"Tenants listed: %1"_qs.arg(o.grid->model()->rowCount()));
    }

    void flagEdits_data()
    {
        QTest::addColumn<int>("screen");
        QTest::addColumn<QString>("key");
        QTest::addColumn<int>("id");
        QTest::addColumn<QString>("sentLine");
        QTest::newRow("Tenant") << int(Screen::Tenants) << u"T104"_qs << 104
                                << u"|T104|Dan|Del|"_qs;
        QTest::newRow("Owner") << int(Screen::Owners) << u"12"_qs << 12
                               << u"O12|Owner|Pat Pipe|Co|"_qs;
        QTest::newRow("Vendor") << int(Screen::Vendors) << u"5"_qs << 5 << u"V5|Vendor|No|"_qs;
    }
    // A cell opened and left without typing is no edit; a refused letter
    // keeps the stored flag; a lower-case letter is stored in upper case
    // and makes the screen send its file on closing, and only then.
    void flagEdits()
    {
        QFETCH(int, screen);
        QFETCH(QString, key);
        QFETCH(int, id);
        QFETCH(QString, sentLine);
        const Screen which = Screen(screen);
        TestSite site;
        UploadsFixture::addAll(site);
        auto script = site.scriptProcessor();
        for (const QString &stored : { u"y"_qs, u""_qs }) {
            flagOf(site, which, id, stored);
            Opened left = open(site, which);
            typeFlag(left, key, QString());
            QCOMPARE(flagOf(site, which, id), stored);
            QTest::keyClick(left.dialog.get(), Qt::Key_Escape);
            QVERIFY(script->calls.isEmpty() && site.prompter.shown().isEmpty());
        }

        Opened o = open(site, which);
        const int row = int(listedKeys(o).split(u' ').indexOf(key));
        typeFlag(o, key, u"x"_qs);
        QTRY_COMPARE(site.prompter.titles(), QStringList { u"Remitra Rent"_qs });
        QVERIFY(site.prompter.texts().first().startsWith(
            u"Please enter 'Y' if this "_qs + QString::fromLatin1(QTest::currentDataTag())));
        QCOMPARE(flagOf(site, which, id), u""_qs);
        QCOMPARE(o.grid->model()->index(row, o.flagColumn).data().toString(), u""_qs);

        typeFlag(o, key, u"d"_qs);
        QCOMPARE(flagOf(site, which, id), u"D"_qs);
        QCOMPARE(o.grid->model()->index(row, o.flagColumn).data().toString(), u"D"_qs);
        QCOMPARE(site.prompter.shown().size(), 1);

        QVERIFY(script->calls.isEmpty());
        click(*o.dialog, "cmdExit");
        QVERIFY(!o.dialog->isVisible());
        QCOMPARE(script->calls.size(), 1);
        const QString sent = which == Screen::Tenants ? site.state->files.tenantUpload
            : which == Screen::Owners                 ? site.state->files.ownerUpload
                                                      : site.state->files.vendorUpload;
        const QString file = TransferFile::fromAnsi(site.fileBytes(sent));
        QVERIFY(file.contains(sentLine));
        const bool tenants = which == Screen::Tenants;
        QCOMPARE(script->calls[0].operation, tenants ? u"Transmit"_qs : u"TransmitPayees"_qs);
        QCOMPARE(script->calls[0].texts,
            (tenants ? QStringList { u""_qs, file } : QStringList { file, u""_qs, u""_qs }));
        QCOMPARE(site.prompter.texts().last(), ProductTexts::success);
    }

    void selectAllChangesOnlyListedRows()
    {
        TestSite site;
        UploadsFixture::addAll(site);
        auto script = site.scriptProcessor();
        Opened o = open(site, Screen::Tenants);
        auto *all = child<QCheckBox>(*o.dialog, "chkSelectAll");
        choose(o.dialog.get(), "optDisplay", u"Remitra Tenants Only"_qs);
        const QString original = tenantFlags(site);

        site.prompter.queueAnswers({ Answer::No, Answer::Yes });
        QTest::mouseClick(all, Qt::LeftButton); // checked: activate all? No.
        QCOMPARE(tenantFlags(site), original);
        QCOMPARE(site.state->msgAnswer, u"7"_qs);
        QTest::mouseClick(all, Qt::LeftButton); // unchecked: remove all? Yes.
        QCOMPARE(site.prompter.texts(),
            (QStringList { u"Are you SURE you want to change ALL Tenants to ACTIVATE REMITRA?"_qs,
                u"Are you SURE you want to REMOVE ALL Tenants from REMITRA?"_qs }));
        QCOMPARE(site.prompter.titles(), QStringList(2, u"Tenant Update"_qs));
        QCOMPARE(site.state->msgAnswer, u"6"_qs);
        // Only the listed (enrolled) tenants; 105 and 106 are outside the
        // portfolio join and " Y " is not listed.
        QCOMPARE(tenantFlags(site),
            u"100=N 101=N 102=N 103= 104=D 105=Y 106=Y 107=N 108=N 109=N 110=N 300= Y "_qs);
        QCOMPARE(o.grid->model()->rowCount(), 0);

        // With a search in effect only the matching rows change.
        choose(o.dialog.get(), "optDisplay", u"All Tenants"_qs);
        auto *search = child<QLineEdit>(*o.dialog, "txtSearch");
        QTest::keyClicks(search, u"Ash Flats"_qs);
        QTest::keyClick(search, Qt::Key_Return);
        site.prompter.queueAnswer(Answer::Yes);
        QTest::mouseClick(all, Qt::LeftButton);
        QCOMPARE(tenantFlags(site),
            u"100=N 101=N 102=Y 103= 104=D 105=Y 106=Y 107=Y 108=N 109=N 110=N 300= Y "_qs);

        // Select-all alone is not an edit: closing sends nothing.
        o.dialog->close();
        QVERIFY(script->calls.isEmpty());
    }

    // The export asks first, saves the flag being typed, and writes the
    // enrolled tenants.
    void exportWritesTheEnrolledTenants()
    {
        TestSite site;
        UploadsFixture::addAll(site);
        Opened o = open(site, Screen::Tenants);
        auto *exportButton = child<QPushButton>(*o.dialog, "cmdExport");
        site.prompter.queueAnswer(Answer::No);
        QTest::mouseClick(exportButton, Qt::LeftButton);
        QVERIFY(site.fileBytes(u"RemitraExport.csv"_qs).isNull());

        typeFlag(o, u"T102"_qs, u"Y"_qs, false);
        site.prompter.clear();
        site.prompter.queueAnswer(Answer::Yes);
        QTest::mouseClick(exportButton, Qt::LeftButton);
        QCOMPARE(site.prompter.titles(),
            (QStringList { u"Remitra Export"_qs, u"Dwellix Remitra Export"_qs }));
        QVERIFY(site.prompter.texts()[1].endsWith(
            QDir::toNativeSeparators(site.path(u"RemitraExport.csv"_qs))));
        QCOMPARE(
            site.scalar(u"SELECT TACH FROM Tenants WHERE TenantID = 102"_qs).toString(), u"Y"_qs);
        QByteArray bytes = site.fileBytes(u"RemitraExport.csv"_qs);
        // Tenant 102 joined the list with the flag typed.
        const QByteArray joined = "T102,Amy,Ash,Ash Flats,1 Ash,,,,,,\r\n";
        QVERIFY(bytes.contains("\r\n" + joined));
        bytes.replace(joined, "");
        QFile expected(testData(u"uploads/export.csv"_qs));
        QVERIFY(expected.open(QIODevice::ReadOnly));
        QCOMPARE(bytes, expected.readAll());
        // The comma in the unit address makes a line of 12 values.
        QCOMPARE(bytes.split('\n')[1].count(','), 11);
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
        auto *exportButton = child<QPushButton>(*o.dialog, "cmdExport");
        site.state->login.missing = true;
        site.prompter.queueAnswer(Answer::Yes);
        QTest::mouseClick(exportButton, Qt::LeftButton);
        QCOMPARE(site.prompter.titles().last(), u"Login Message"_qs);
        QCOMPARE(site.fileBytes(u"RemitraExport.csv"_qs), QByteArray("old"));

        site.state->login.missing = false;
        site.prompter.queueAnswer(Answer::Yes);
        QTest::mouseClick(exportButton, Qt::LeftButton);
        QCOMPARE(site.prompter.texts().last(),
            u"There are no Remita tenants selected. No export file was created"_qs);
        QVERIFY(site.fileBytes(u"RemitraExport.csv"_qs).isNull());
    }
};

QTEST_MAIN(TestEnrolment)
#include "tst_enrolment.moc"
