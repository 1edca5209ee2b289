// The main window over two embedded servers, as a person has it before them.
#pragma once

#include "app/settings.h"
#include "db/mdlObjects.h"
#include "db/mdlServers.h"
#include "db/modPanels.h"
#include "db/modSchema.h"
#include "tests/support.h"
#include "ui/frmMain.h"

namespace qrel {

class MainWindow : public TestProgram {
 public:
  // Loads two servers: One with Archive and Shop, Two with Shop alone. Adds One to the list, then Two.
  void makeServers() {
    load("One", "Archive", "CREATE TABLE Old (a int)\nGO\nCREATE TABLE Orders (b int)");
    load("One", "Shop", shop);
    load("Two", "Shop", "CREATE TABLE Orders (c int)\nGO\nCREATE TABLE Parcels (d int)");
    addServer("One");
    addServer("Two");
  }
  void addServer(const std::string& name) {
    AppendServer(program, server(name, ""));
    LoadServers(program);
  }
  void set(const char* name, std::int32_t value) { SaveSetting(program, *findSetting(name), value); }

  // Opens the window without connecting.
  void open() {
    form.load();
    form.activate();
  }
  // Opens it and connects: both panels show Archive of One.
  void connect() {
    open();
    form.cmdConnect.personClicks();
  }
  void chooseType(long type) {
    for (std::size_t row = 0; row < work.cmbType.count(); ++row)
      if (work.cmbType.itemData(row) == type) work.cmbType.select(static_cast<int>(row));
  }
  void chooseDb(int side, const std::string& name) { choose(work.pvlDb[at(side)], name); }
  void chooseObject(int side, const std::string& name) { choose(work.pvlSqlObj[at(side)], name); }

  std::string databases(int side) const { return texts(work.pvlDb[at(side)]); }
  std::string objects(int side) const { return texts(work.pvlSqlObj[at(side)]); }
  std::string selectedObject(int side) const { return Workspace::selectedText(work.pvlSqlObj[at(side)]); }
  const std::string& text(int side) const { return work.txtTXProc[at(side)].text(); }
  // The text of the box shown last; the boxes are forgotten.
  std::string lastBox() {
    const std::string last = host.boxes.empty() ? std::string() : host.boxes.back().text;
    host.boxes.clear();
    return last;
  }
  modSchemaState& filters() { return program.state<modSchemaState>(); }

  static constexpr const char* shop = R"(
CREATE TABLE Customers (a int)
CREATE TABLE Orders (b int)
GO
CREATE SCHEMA sales
GO
CREATE TABLE sales.Rates (r int)
GO
CREATE PROCEDURE GetA AS SELECT 1
GO
CREATE PROCEDURE GetB AS SELECT 2
)";

  frmMain form{program};
  Workspace& work = form.workspace;

 private:
  static std::size_t at(int side) { return static_cast<std::size_t>(side); }
  static std::string texts(const CheckList& list) {
    std::string text;
    for (std::size_t row = 0; row < list.count(); ++row)
      text += (list.isSelected(row) ? "*" : "") + list.cell(row, 0) + " ";
    return text;
  }
  static void choose(CheckList& list, const std::string& name) {
    const int row = list.find(name);
    ASSERT_GE(row, 0) << name;
    list.personSelects({static_cast<std::size_t>(row)});
  }
};

}  // namespace qrel
