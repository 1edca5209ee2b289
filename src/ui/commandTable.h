// The commands of the main window. Menu bar, context menu and keys are all made from this one table.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "platform/controls/menu.h"

namespace qrel {

class frmMain;

// What runs before a command; when it returns False nothing further happens.
enum class Guard { none, CheckMdac, CheckMdacAndServerInfoSet };

struct MenuCommand {
  long id = 0;          // 0 for a popup without a number and for what only a key starts
  std::string path;     // captions of the popups around it without "&", "Tools/Find Object"; empty for the bar
  std::string caption;  // with "&" before its access key
  Guard guard = Guard::none;
  std::function<void(frmMain&)> action;  // none: a popup
  std::string key = {};                  // of the whole window: "F5"
  bool separatorBefore = false;
  std::vector<long> types = {};  // the context menu offers it for these object types alone; empty: for all
  bool clearsBusy = false;       // it looks at the busy flag itself, which is therefore cleared before it runs
};
using CommandTable = std::vector<MenuCommand>;

// The popup that all commands of the panes' context menu have as path. It isn't on the bar.
inline constexpr const char* contextMenuPath = "Text pane";
// The path of what is in no menu: its key runs it at once, also while the window is busy.
inline constexpr const char* keysPath = "Keys";

// All commands in display order. Those from 900 on are this program's own, beside the ones whose ids are told: 901
// loads scripts, 902 to 905 find the way in what is shown.
CommandTable MainCommands();
// Null without an entry; popups and what has no number have none.
const MenuCommand* FindCommand(const CommandTable& commands, long lngId);
// What lies in the popup of that path, as menu items; popups with nothing in them are left out.
std::vector<MenuItem> MakeMenu(const CommandTable& commands, const std::string& path);

}  // namespace qrel
