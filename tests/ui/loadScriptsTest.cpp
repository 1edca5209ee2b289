// Scripts loaded from the main window.
#include <sstream>

#include "db/frmLoadScripts.h"
#include "embedded/load/loadReport.h"
#include "tests/ui/mainWindow.h"

namespace qrel {
namespace {

class LoadingScripts : public testing::Test, public MainWindow {
 protected:
  LoadingScripts() { program.state<ScriptLoaderState>().loader = &loader; }
  void window(const std::function<void(frmLoadScripts&)>& act) {
    host.windows.push_back([act](Form& shown) { act(dynamic_cast<frmLoadScripts&>(shown)); });
  }
};

TEST_F(LoadingScripts, FilesDroppedOnAPanelAreLoadedAndShownThere) {
  const std::string file = folder.write("Shop.sql", "CREATE TABLE Orders (a int)\nGO\nFLY me to the moon\n").string();
  LoadOptions options;
  const LoadReport report = loadScripts(servers, "Other", "Shop", {file}, options);
  std::ostringstream words, skipped;
  printLoadReport(words, report);
  listSkipped(skipped, report);
  addServer("Other");
  open();
  window([&](frmLoadScripts& dialog) {
    EXPECT_EQ(dialog.txtServer.text() + "." + dialog.txtDatabase.text(), "Other.Shop");
    dialog.txtServer.personTypes(" ");
    dialog.personPressesEnter();
    EXPECT_EQ(lastBox(), "Please enter the name of the embedded server.");
    dialog.txtServer.personTypes("Fresh");
    dialog.personPressesEnter();
    EXPECT_EQ(dialog.txtResult.text(), words.str() + "\n" + skipped.str());
    EXPECT_NE(skipped.str().find("FLY me"), std::string::npos);
    EXPECT_EQ(dialog.lblProgress.text(), "Loaded, but not everything: what is missing is listed.");
    dialog.personPressesEsc();
    EXPECT_TRUE(dialog.closed());
  });
  work.pvlSqlObj[1].onFilesDropped({file});
  EXPECT_EQ(work.cmbServer[1].text(), "Fresh") << "in the list of servers by now";
  EXPECT_EQ(SelectedDatabase(work, 1) + " " + objects(1), "Shop *Orders ");
  EXPECT_EQ(objects(0), "") << "the other panel stays as it was";
}

TEST_F(LoadingScripts, AStoppedOrFailedLoadChangesNothing) {
  host.windows.push_back([](Form&) {});  // there is no server: the dialog that adds one
  open();
  lastBox();
  std::string script;
  for (int i = 0; i < 400; ++i) script += "CREATE TABLE t" + std::to_string(i) + " (a int)\nGO\n";
  host.files = {folder.write("big.sql", script).string()};
  window([&](frmLoadScripts& dialog) {
    dialog.personPressesEnter();
    EXPECT_EQ(lastBox(), "Please enter the name of the database.");
    dialog.txtDatabase.personTypes("Big");
    dialog.personPressesEnter();
    EXPECT_EQ(lastBox(), "Please add at least one script file or folder.");
    dialog.cmdAddFiles.personClicks();
    host.onDoEvents = [&] {
      EXPECT_EQ(dialog.cmdCancel.text(), "Stop");
      EXPECT_FALSE(dialog.closeRequested()) << "which stops it, too";
    };
    dialog.personPressesEnter();
    host.onDoEvents = nullptr;
    EXPECT_EQ(dialog.lblProgress.text(), "Operation cancelled by the user. Nothing was changed.");
    dialog.lstFiles.personSelects({0});
    dialog.cmdRemove.personClicks();
    dialog.lstFiles.onFilesDropped({"/nowhere/at/all.sql"});
    dialog.personPressesEnter();
    EXPECT_NE(lastBox().find("/nowhere/at/all.sql"), std::string::npos);
    dialog.personPressesEsc();
  });
  form.CommandBars_Execute(901);
  EXPECT_TRUE(servers.list().empty());
  EXPECT_EQ(work.cmbServer[0].count(), 0U);
}

}  // namespace
}  // namespace qrel
