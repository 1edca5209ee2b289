#include "db/frmLoadScripts.h"

#include <algorithm>

#include "app/trap.h"
#include "platform/text.h"

namespace qrel {

namespace {

constexpr const char* inFrmLoadScripts = "frmLoadScripts";
constexpr const char* firstServer = "scripts";  // what the first server is called unless the person says otherwise

// "shop" of "/home/me/shop.sql" and of "/home/me/shop".
std::string nameOfPath(std::string strPath) {
  while (strPath.size() > 1 && (strPath.back() == '/' || strPath.back() == '\\')) strPath.pop_back();
  strPath = strPath.substr(strPath.find_last_of("/\\") + 1);
  for (const std::string strEnding : {".sql", ".sqlproj"})
    if (lowerCase(strPath).ends_with(strEnding)) return strPath.substr(0, strPath.size() - strEnding.size());
  return strPath;
}

}  // namespace

frmLoadScripts::frmLoadScripts(Program& program, ScriptLoader& loader)
    : Form(inFrmLoadScripts), program_(program), loader_(loader) {
  for (Control* control :
       std::initializer_list<Control*>{&txtServer, &txtDatabase, &lstFiles, &cmdAddFiles, &cmdAddFolder, &cmdRemove,
                                       &chkReplace, &lblProgress, &txtResult, &cmdLoad, &cmdCancel})
    add(*control);
  caption = "Load Scripts";
  const std::vector<std::string> servers = loader.servers();
  txtServer.setText(servers.empty() ? firstServer : servers.front());
  txtServer.suggestions = servers;
  txtDatabase.suggestions = loader.databases(txtServer.text());
  lstFiles.multipleSelection = true;
  lstFiles.onFilesDropped = [this](const std::vector<std::string>& paths) { addPaths(paths); };
  txtResult.readOnly = true;
  cmdLoad.isDefault = true;
  cmdCancel.isCancel = true;
  const std::string strFilter = "SQL scripts and projects (*.sql *.sqlproj)|*.sql *.sqlproj";
  cmdAddFiles.onClick = [this, strFilter] {
    addPaths(program_.host.openFilesDialog({"Add script files", strFilter, {}}));
  };
  cmdAddFolder.onClick = [this] {
    if (const std::string folder = program_.host.openFolderDialog("Add a folder of scripts"); !folder.empty())
      addPaths({folder});
  };
  cmdRemove.onClick = [this] { removeSelected(); };
  cmdLoad.onClick = [this] { trap(program_, inFrmLoadScripts, "cmdLoad_Click", [&] { loadScripts(); }); };
  cmdCancel.onClick = [this] {
    if (running_)
      stop_ = true;
    else
      close();
  };
}

void frmLoadScripts::ShowUp(const std::vector<std::string>& paths, std::string& strServer, std::string& strDb) {
  addPaths(paths);
  program_.host.showModal(*this);
  strServer = strServer_;
  strDb = strDb_;
}

bool frmLoadScripts::closeRequested() {
  stop_ = running_;
  return !running_;
}

void frmLoadScripts::addPaths(const std::vector<std::string>& paths) {
  if (running_) return;
  for (const std::string& strPath : paths) {
    bool listed = false;
    for (std::size_t row = 0; row < lstFiles.count(); ++row) listed = listed || lstFiles.cell(row, 0) == strPath;
    if (!listed) lstFiles.add(strPath);
  }
  if (txtDatabase.text().empty() && !paths.empty()) txtDatabase.setText(nameOfPath(paths.front()));
}

void frmLoadScripts::removeSelected() {
  for (std::size_t row = lstFiles.count(); row-- > 0;)
    if (lstFiles.isSelected(row)) lstFiles.remove(row);
}

bool frmLoadScripts::refuse(Control& control, const std::string& strMessage) {
  program_.host.messageBox(strMessage, Icon::Information, caption);
  control.setFocus(true);
  return false;
}

bool frmLoadScripts::inputIsValid() {
  txtServer.setText(std::string(trimBlanks(txtServer.text())));
  txtDatabase.setText(std::string(trimBlanks(txtDatabase.text())));
  if (txtServer.text().empty()) return refuse(txtServer, "Please enter the name of the embedded server.");
  if (txtDatabase.text().empty()) return refuse(txtDatabase, "Please enter the name of the database.");
  if (lstFiles.count() == 0) return refuse(cmdAddFiles, "Please add at least one script file or folder.");
  return true;
}

void frmLoadScripts::showRunning(bool running) {
  running_ = running;
  stop_ = false;
  for (Control* control : std::initializer_list<Control*>{&txtServer, &txtDatabase, &cmdAddFiles, &cmdAddFolder,
                                                          &cmdRemove, &chkReplace, &cmdLoad})
    control->setEnabled(!running);
  cmdCancel.setText(running ? "Stop" : "Close");
}

void frmLoadScripts::loadScripts() {
  if (running_ || !inputIsValid()) return;
  ScriptLoadRequest request{txtServer.text(), txtDatabase.text(), {}, chkReplace.checked(), false};
  for (std::size_t row = 0; row < lstFiles.count(); ++row) request.paths.push_back(lstFiles.cell(row, 0));
  const std::int64_t occupied = loadWith(request);
  if (occupied == 0) return;
  const Answer answer = program_.host.messageBox(
      "The database '" + request.database + "' of '" + request.server + "' holds " + std::to_string(occupied) +
          " objects already.\n\nYes: empty it first.\nNo: add to what it holds.\nCancel: leave it as it is.",
      Icon::Question, caption, Buttons::YesNoCancel, 3);
  request.replace = answer == Answer::Yes;
  request.add = answer == Answer::No;
  if (request.replace || request.add) loadWith(request);
}

// Loads and shows what became of it. Not 0: it was left alone because it holds so many objects.
std::int64_t frmLoadScripts::loadWith(const ScriptLoadRequest& request) {
  ScriptLoadProgress progress;
  progress.at = [this](const std::string& strFile, std::size_t line) {
    lblProgress.setText(strFile + ": line " + std::to_string(line));
    program_.host.doEvents();
  };
  progress.stop = [this] {
    program_.host.doEvents();
    return stop_;
  };
  progress.waiting = [this] { lblProgress.setText("Waiting for another process to end its load ..."); };
  showRunning(true);
  txtResult.setText({});
  lblProgress.setText("Loading ...");
  std::string strError;
  std::int64_t occupied = 0;
  try {
    const PointerScope pointer(program_.host, Pointer::Hourglass);
    const ScriptLoadResult result = loader_.load(request, progress);
    occupied = result.occupied;
    showResult(result);
    if (!result.stopped && occupied == 0) {
      strServer_ = request.server;
      strDb_ = request.database;
    }
  } catch (const std::exception& error) {
    strError = describeError(error).description;
    lblProgress.setText("Not loaded.");
  }
  showRunning(false);
  if (!strError.empty()) program_.host.messageBox(strError, Icon::Warning, "Cannot Load");
  return occupied;
}

void frmLoadScripts::showResult(const ScriptLoadResult& result) {
  if (result.stopped) return lblProgress.setText("Operation cancelled by the user. Nothing was changed.");
  if (result.occupied > 0) return lblProgress.setText("Nothing was changed.");
  lblProgress.setText(result.incomplete ? "Loaded, but not everything: what is missing is listed." : "Loaded.");
  txtResult.setText(result.skipped.empty() ? result.table : result.table + "\n" + result.skipped);
}

}  // namespace qrel
