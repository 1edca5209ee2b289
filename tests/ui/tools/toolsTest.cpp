// The small tools: finding an object, database information, attaching a database, tips.
#include <map>

#include "app/frmErrorReport.h"
#include "app/mdlMain.h"
#include "report/frmReport.h"
#include "tests/ui/mainWindow.h"
#include "ui/tools/frmAttachDb.h"
#include "ui/tools/frmGetDbInfo.h"
#include "ui/tools/frmSearchForObject_Gen.h"
#include "ui/tools/frmTip.h"

namespace qrel {
namespace {

class ToolsTest : public testing::Test, public MainWindow {
 protected:
  template <class Window>
  void inNext(std::function<void(Window&)> act) {
    host.windows.push_back([act = std::move(act)](Form& shown) { act(dynamic_cast<Window&>(shown)); });
  }
  static std::string found(const frmSearchForObject_Gen& window) {
    std::string names;
    for (std::size_t row = 0; row < window.pvlSqlObj.count(); ++row) names += window.pvlSqlObj.cell(row, 0) + " ";
    return names;
  }
  static bool has(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }
};

TEST_F(ToolsTest, AnObjectIsFoundByTheBeginningOfItsNameAndShown) {
  makeServers();
  open();
  form.cmdFind[1].personClicks();
  EXPECT_EQ(lastBox(), "Cannot search for object - the list of databases is empty.");
  form.cmdConnect.personClicks();
  chooseDb(1, "Shop");
  inNext<frmSearchForObject_Gen>([&](frmSearchForObject_Gen& window) {
    EXPECT_EQ(window.lblFind.text() + window.lblDb1.text(), "Find TableDatabase: Shop");
    window.personPressesEnter();
    EXPECT_EQ(lastBox(),
              "Type the first letters of the name of the Table you want to search for and click button 'Search' (or "
              "press Enter)..");
    window.cmdOK.personClicks();
    EXPECT_EQ(lastBox(), "Please select the table you want to view.");
    const std::map<std::string, std::string> searches = {
        {" o ", "Orders "}, {"x", ""}, {"_r", "Orders "}, {"%", "Customers Orders Rates "}};
    for (const auto& [text, names] : searches) {
      window.txtFind.personTypes(text);
      window.personPressesEnter();
      EXPECT_EQ(found(window), names) << text;
    }
    window.cmbType.select(1);
    EXPECT_EQ(found(window), "");
    window.txtFind.personTypes("Get");
    window.cmdFind.personClicks();
    window.pvlSqlObj.personSelects({1});
    window.cmdOK.personClicks();
  });
  form.barCommands.personChooses(508);
  EXPECT_EQ(work.objectType(), objProcedures);
  EXPECT_EQ(selectedObject(1), "GetB");
  EXPECT_TRUE(has(text(1), "SELECT 2"));
  EXPECT_EQ(objects(0), "") << "the other side follows the type";

  // A quotation mark breaks the query, as the server says.
  inNext<frmSearchForObject_Gen>([&](frmSearchForObject_Gen& window) {
    inNext<frmErrorReport>([](frmErrorReport&) {});
    window.txtFind.personTypes("O'");
    window.cmdFind.personClicks();
  });
  form.cmdFind[1].personClicks();
  EXPECT_EQ(selectedObject(1), "GetB");
}

TEST_F(ToolsTest, DatabaseInformationListsWhatThereIs) {
  makeServers();
  load("One", "Shop", "INSERT INTO Customers VALUES (1)\nINSERT INTO Orders VALUES (1)\nINSERT INTO Orders VALUES (2)");
  open();
  form.personPressesKey("F10");
  EXPECT_EQ(lastBox(), "Cannot display database info - the list of databases is empty.");
  form.cmdConnect.personClicks();
  chooseDb(1, "Shop");
  std::string report;
  inNext<frmReport>([&](frmReport& window) { report = window.txtReport.text(); });
  inNext<frmGetDbInfo>([&](frmGetDbInfo& window) {
    EXPECT_EQ(window.lblInfo[0].text(), "There are 3 tables in Shop database.");
    EXPECT_EQ(window.lblInfo[3].text(), "There are no views in Shop database.");
    EXPECT_FALSE(window.tmrStatus.enabled());
  });
  filters().gblnSchemaFilter[1] = true;
  filters().gstrSchemaFilter[1] = "dbo,sales";
  host.shown.clear();
  form.personPressesKey("F11");
  EXPECT_EQ(host.shown, (std::vector<std::string>{"frmGetDbInfo", "frmReport"}));
  EXPECT_EQ(report.find("Jan 02, 2026\n\nDatabase: Shop\n\nApplied filtering by Target: dbo,sales\n\nList of tables\n"
                        "1     Customers (1 record)\n2     Orders (2 records)\n3     Rates (0 records)\n\n"
                        "List of procedures\n1     GetA\n2     GetB\n\nThere are no functions in this database.\n"),
            0U)
      << report;
  EXPECT_TRUE(has(report, "There are no relationships in this database."));

  // Stopped while it runs: neither a report nor a window that stays.
  frmGetDbInfo stopped(program);
  host.onDoEvents = [&] { EXPECT_FALSE(stopped.closeRequested()); };
  host.windows.push_back([](Form&) {});
  stopped.ShowUp(1, "Shop");
  host.onDoEvents = nullptr;
  EXPECT_TRUE(stopped.closed());
  EXPECT_EQ(host.shown.back(), "frmGetDbInfo");
  host.windows.clear();
}

TEST_F(ToolsTest, ADatabaseFileIsAttachedToTheSourceServer) {
  makeServers();
  open();
  form.barCommands.personChooses(509);
  EXPECT_EQ(lastBox(), "Please connect to the server first.");
  form.cmdConnect.personClicks();
  const std::string file = (folder.path() / "copy.mdf").string();
  std::filesystem::copy_file(servers.databaseFile("Two", "Shop"), file);
  inNext<frmAttachDb>([&](frmAttachDb& window) {
    const auto told = [&] {
      window.cmdOK.personClicks();
      return lastBox();
    };
    EXPECT_EQ(told(), "Please specify database name.");
    window.txtPath[0].personTypes("Shop");
    EXPECT_EQ(told(), "Please specify database file.");
    window.txtPath[1].personTypes(" " + file + "x ");
    EXPECT_EQ(told(), "Please specify log file.");
    window.txtPath[2].personTypes(file + ".ldf");
    EXPECT_EQ(told(), "File " + file + "x doesn't exist.");
    host.files = {file, ""};
    window.cmdFileSelect[0].personClicks();
    window.cmdFileSelect[1].personClicks();
    EXPECT_EQ(host.fileDialogs[0].filter, "SQL Server Database files (*.mdf)|*.mdf");
    EXPECT_EQ(told(), "File " + file + ".ldf doesn't exist.");
    window.chkAttachSingleFile.personSets(true);
    EXPECT_FALSE(window.txtPath[2].enabled() || window.cmdFileSelect[1].enabled());
    // The server refuses a name that it has; the window stays for another one.
    std::string report;
    inNext<frmErrorReport>([&](frmErrorReport& shown) { report = shown.txtErrDesc.text(); });
    window.cmdOK.personClicks();
    EXPECT_TRUE(has(report, "frmAttachDb:cmdOK_Click") && has(report, "already exists")) << report;
    EXPECT_FALSE(window.closed());
    window.txtPath[0].personTypes("Third");
    EXPECT_EQ(told(), "Attached Successfully");
    EXPECT_TRUE(window.closed());
  });
  form.barCommands.personChooses(509);
  EXPECT_EQ(databases(0), "*Archive master Shop Third ");
  chooseDb(0, "Third");
  EXPECT_EQ(objects(0), "*Orders Parcels ");
  chooseDb(0, "Shop");
  EXPECT_EQ(objects(0), "*Customers Orders Rates ") << "what was there is as it was";
}

TEST_F(ToolsTest, TipsComeOneAfterTheOther) {
  SetFilePaths(program);
  const std::string file =
      folder.write("TipOfDay.txt", "\r\n\r\n\r\n\r\n\r\n\r\nfirst     more\r\n\r\nthird\r\n").string();
  std::vector<std::string> seen;
  const auto next = [&](frmTip& window) { seen.push_back(window.lblTipNum.text() + ": " + window.lblTipText.text()); };
  inNext<frmTip>([&](frmTip& window) {
    next(window);
    window.cmdNextTip.personClicks();
    next(window);
    window.chkLoadTipsAtStartup.personSets(true);
  });
  form.ShowTip();
  EXPECT_EQ(ReadNumber(program, "ShowTipOfDay"), 1);
  EXPECT_EQ(ReadNumber(program, "DisplayedTipNum"), 2);
  inNext<frmTip>([&](frmTip& window) {
    EXPECT_TRUE(window.chkLoadTipsAtStartup.checked());
    next(window);
    window.cmdNextTip.personClicks();
    next(window);
  });
  form.ShowTip();
  EXPECT_EQ(seen, (std::vector<std::string>{"Tip number 1/3: first\r\n\r\nmore", "Tip number 2/3: ",
                                            "Tip number 3/3: third", "Tip number 1/3: first\r\n\r\nmore"}));

  set("DisplayedTipNum", 3);
  folder.write("TipOfDay.txt", "\r\n\r\n\r\n\r\n\r\n\r\n");
  inNext<frmTip>([](frmTip& window) {
    window.cmdNextTip.personClicks();
    EXPECT_EQ(window.lblTipText.text() + window.lblTipNum.text(), "");
  });
  form.ShowTip();
  std::filesystem::remove(file);
  inNext<frmTip>([](frmTip& window) {
    EXPECT_EQ(window.lblTipText.text().find("No tips available"), 0U);
    EXPECT_EQ(window.lblTipNum.text(), "Error");
  });
  form.ShowTip();
  EXPECT_EQ(ReadNumber(program, "DisplayedTipNum"), 3);
}

}  // namespace
}  // namespace qrel
