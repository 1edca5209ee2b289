#include "report/modCopyToFile.h"

#include "app/Workspace.h"
#include "app/modTextPane.h"
#include "app/trap.h"
#include "platform/files.h"
#include "platform/text.h"

namespace qrel {

namespace {

// The selected object's row on a side, -1 after a message when there is none.
int objectToCopy(Program& program, const Workspace& workspace, std::size_t side) {
  const int row = workspace.pvlSqlObj[side].firstSelected();
  if (row < 0) program.host.messageBox("There is nothing to copy.", Icon::Information, "Cannot Copy");
  return row;
}

}  // namespace

bool CopyToFile(Program& program, const std::string& strText, const std::string& strBaseName, std::string& strPath,
                const std::string& strTargetFile) {
  strPath.clear();
  return trap(program, "mdlMain", "CopyToFile", false, [&] {
    const std::string_view text = trimBlanks(strText);
    if (text.empty()) return false;
    std::string target = strTargetFile;
    if (target.empty()) {
      target =
          program.host.saveFileDialog({"Specify Target File", "*.*", program.main.gstrDataPath + strBaseName + ".txt"});
    }
    if (target.empty()) return false;
    files::writeAtomically(target, text);
    strPath = target;
    return true;
  });
}

void CopyObjectToClipboard(Program& program, Workspace& workspace, int side) {
  trap(program, "frmMain", "cmdCopyClip_Click", [&] {
    const auto index = static_cast<std::size_t>(side);
    if (objectToCopy(program, workspace, index) < 0) return;
    TxText_CopyToClipboard(program, workspace.txtTXProc[index]);
  });
}

void CopyObjectToFile(Program& program, Workspace& workspace, int side) {
  trap(program, "frmMain", "cmdCopyToFile_Click", [&] {
    const auto index = static_cast<std::size_t>(side);
    const int row = objectToCopy(program, workspace, index);
    if (row < 0) return;
    CompLineArray arr;
    std::int32_t lngError = 0;
    const std::int32_t lngCount = TXText_ConvTextToArray(workspace.txtTXProc[index], arr, lngError);
    if (lngCount < 1) return;
    const std::string strText = TXText_ConvArrayToText(arr, lngCount, lngError);
    std::string strPath;
    CopyToFile(program, strText, workspace.pvlSqlObj[index].cell(static_cast<std::size_t>(row), 0), strPath, {});
  });
}

}  // namespace qrel
