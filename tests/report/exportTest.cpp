// What exports write, to the byte, and what their window asks and tells.
#include "platform/error.h"
#include "platform/fileFaults.h"
#include "platform/files.h"
#include "platform/text.h"
#include "process/modSavedProcess.h"
#include "report/frmExport.h"
#include "tests/support.h"

namespace qrel {
namespace {

namespace fs = std::filesystem;

constexpr std::uint32_t red = 255;

// Lines as a file has them; "[back fore text]" is a cell.
std::string lines(std::string text) {
  for (std::size_t at = 0; (at = text.find("\n[", at)) != std::string::npos;) {
    const std::size_t end = text.find("]\n", at);
    const std::string cell = text.substr(at + 2, end - at - 2);
    const std::string back = cell.substr(0, cell.find(' ')), rest = cell.substr(back.size() + 1);
    const std::string fore = rest.substr(0, rest.find(' ')), value = rest.substr(fore.size() + 1);
    text.replace(at + 1, end - at,
                 "<TD BGCOLOR = " + back + "><FONT COLOR = " + fore + ">&nbsp " + value + " &nbsp</TD>");
  }
  return replaceAll(text, "\n", "\r\n");
}

void fill(Grid& table, const std::vector<std::vector<std::string>>& rows) {
  table.setColumnCount(rows[0].size());
  table.setRowCount(rows.size());
  for (std::size_t row = 0; row < rows.size(); ++row)
    for (std::size_t column = 0; column < rows[row].size(); ++column) table.setText(row, column, rows[row][column]);
}

class Export : public ::testing::Test {
 protected:
  Export() {
    test.program.main.gstrDataPath = test.folder.path().string() + "/";
    source.strCaption = "Differences between data in tables 'a' and 'b'";
    source.lblTableName = {"Source Table: a", "Target Table: b"};
    source.lblStats = {"In S:", "In T:", "Different:", "1,000", "2", "3"};
    source.VSFlexGrid1 = &grid;
    source.rpcReport = &report;
  }

  std::string path(const std::string& name) const { return (test.folder.path() / name).string(); }
  std::string written(const std::string& name) const { return files::readWholeFile(path(name)); }
  // Opens the window for a person; without one it has to act by itself.
  tExportResult show(std::int32_t mode, const tExportRequest& request, std::function<void(frmExport&)> person = {}) {
    frmExport window(test.program);
    window.mlngMode = mode;
    shown = &window;
    test.host.windows.push_front([person](Form& form) {
      ASSERT_TRUE(person) << "the window didn't close";
      person(dynamic_cast<frmExport&>(form));
    });
    const tExportResult result = window.ShowUp(source, request);
    shown = nullptr;
    return result;
  }
  // Exports by itself and gives what was written.
  std::string exported(std::int32_t mode, std::int32_t type, tExportRequest request = {}) {
    request.strFilePath = path("out");
    request.lngExportType = type;
    test.host.answers.push_back(Answer::No);  // to look at the file
    const tExportResult result = show(mode, request);
    EXPECT_TRUE(result.blnOK);
    EXPECT_EQ(result.lngType, type);
    EXPECT_EQ(result.strPath, path("out"));
    return written("out");
  }
  std::string box(std::size_t index) const {
    const auto& each = test.host.boxes.at(index);
    return each.title + ": " + each.text;
  }
  static void fillRows(Grid& table, int rows) {
    std::vector<std::vector<std::string>> cells{{"Row", "v"}};
    for (int row = 1; row <= rows; ++row) cells.push_back({std::to_string(row), "x"});
    fill(table, cells);
  }

  TestProgram test;
  Grid grid{"VSFlexGrid1"};
  ReportControl report{"rpcReport"};
  tExportSource source;
  frmExport* shown = nullptr;
};

TEST_F(Export, DifferencesAsHtml) {
  fill(grid, {{"Row", " Name "}, {"1", "  <b>A & B</b> "}, {"1", "say \"x\""}, {"2", ""}});
  grid.paint(1, 1, 0, 1, 0xFFFF00);
  grid.paint(2, 2, 0, 1, 0x80FFFF);
  grid.setTextColour(1, 1, red);
  grid.setTextColour(2, 0, 0x012345);
  const std::string expected = R"(<HTML><HEAD><TITLE>Data Differences </TITLE></HEAD>
<BODY BGCOLOR = "FFFFFF">
<p align='center'><b> Differences between data in tables 'a' and 'b'</b><p> Source Table: a<br> Target Table: b<p>
<TABLE BGCOLOR = "000000" WIDTH = "100%">
<TR>
<TD BGCOLOR = CCCCC><B>&nbsp Row &nbsp</B></TD>
<TD BGCOLOR = CCCCC><B>&nbsp Name &nbsp</B></TD>
</TR>
<TR>
<TD BGCOLOR = CCCCC><FONT COLOR = 000000>&nbsp 1 &nbsp</TD>
<TD BGCOLOR = 00FFFF><FONT COLOR = FF0000>&nbsp <b>A & B</b> &nbsp</TD>
</TR>
<TR>
[CCCCC 452301 1]
[FFFF80 000000 say "x"]
</TR>
<TR>
[CCCCC 000000 2]
[FFFFFF 000000 ]
</TR>
</TABLE></BODY></HTML>
<p align='center'><b> In S: 1,000<br> In T: 2<br> Different: 3)";
  tExportRequest request;
  request.strLimitText = "Only 5 shown.";
  EXPECT_EQ(exported(exportFromCompareData, exportHtml, request), lines(expected + "</b>\n"));
  request.lngLimitCount = 1;
  EXPECT_EQ(exported(exportFromCompareData, exportHtml, request), lines(expected + "<br> Only 5 shown.</b>\n"));
}

TEST_F(Export, ViewerAsHtmlHasRowsOfTwoColoursAndTheRecordsLoaded) {
  fillRows(grid, 2);
  grid.paint(1, 2, 0, 1, 0x80FFFF);
  grid.setTextColour(2, 1, red);
  source.lblStats[0] = "Number of records: 2,000";
  source.lblCurRec = "1,235";
  for (const bool visible : {false, true}) {
    source.blnCurRecVisible = visible;
    const std::string text = exported(exportFromDataView, exportHtml, {"", 0, 1, "is not for this window"});
    const std::string detail =
        visible ? "Number of records: 2,000<br> Number of records loaded: 1234<p>\n<TABLE" : "<p>\n<TABLE";
    EXPECT_NE(text.find(lines("'b'</b><p> Source Table: a<br> " + detail)), std::string::npos) << text;
    EXPECT_EQ(text.substr(text.find("</B></TD>\r\n</TR>") + 11), lines(R"(</TR>
<TR>
[CCCCC 000000 1]
[FFFFFF 000000 x]
</TR>
<TR>
[CCCCC 000000 2]
[00FFFF FF0000 x]
</TR>
</TABLE></BODY></HTML>
)"));
  }
}

TEST_F(Export, AnalyzerRowsOfImagesHaveNoValues) {
  for (const char* caption : {" Column Name", "Data Type", "Value 1"}) report.addColumn(caption, 960);
  const std::array<std::string, 3> records[]{{"pic", "image", "\xC3\x84"}, {"c", "Image", " 7 "}};
  for (const auto& record : records)
    for (std::size_t column = 0, row = report.addRecord(); column < 3; ++column)
      report.setText(row, column, record[column]);
  report.paint(1, 2, 0, 2, 0xC0FFFF);
  report.setTextColour(2, 2, 0xFF0000);
  EXPECT_EQ(exported(exportFromDataAnalyze, exportHtml), lines(R"(<HTML><HEAD><TITLE>Data Differences  </TITLE></HEAD>
<BODY BGCOLOR = "FFFFFF">
<p align='center'><b> Differences between data in tables 'a' and 'b'</b><p> )"
                                                               R"(
<TABLE BGCOLOR = "000000" WIDTH = "100%">
<TR>
<TD BGCOLOR = CCCCC><B>&nbsp Column Name &nbsp</B></TD>
<TD BGCOLOR = CCCCC><B>&nbsp Data Type &nbsp</B></TD>
<TD BGCOLOR = CCCCC><B>&nbsp Value 1 &nbsp</B></TD>
</TR>
<TR>
[CCCCC 000000 pic]
[FFFFFF 000000 image]
[FFFFFF 000000 ]
</TR>
<TR>
[CCCCC 000000 c]
[FFFFFF 000000 Image]
[FFFFFF 0000FF 7]
</TR>
</TABLE></BODY></HTML>
)")) << "what isn't written needs no byte order mark either";
  test.program.main.gblnCloseAfterRun = true;  // asks to look at the file all the same
  EXPECT_EQ(exported(exportFromDataAnalyze, exportCsv),
            lines("Column Name,Data Type,Value 1\npic,image,\nc,Image,7\n"));
  report.clear();
  EXPECT_EQ(exported(exportFromDataAnalyze, exportCsv), lines("Column Name,Data Type,Value 1\n"));
}

TEST_F(Export, GridsAsCsv) {
  fill(grid, {{"Row", " a\"b "}, {"1", "x, y"}, {"2", "two\nlines"}, {"3", " "}});
  const auto csv = [&](const tCsvForm& form) {
    files::AtomicFile file(path("out"));
    EXPECT_TRUE(GridToCSV(grid, form, file, [](std::int32_t) { return true; }));
    file.finish();
    return written("out");
  };
  EXPECT_EQ(csv({false, false}), "Row,a\"b\r\n1,x, y\r\n2,two\nlines\r\n3,\r\n");
  EXPECT_EQ(csv({true, false}), "\"Row\",\"a\"b\"\r\n\"1\",\"x, y\"\r\n\"2\",\"two\nlines\"\r\n\"3\",\"\"\r\n");
  EXPECT_EQ(csv({false, true}), "Row,\" a\"\"b \"\r\n1,\"x, y\"\r\n2,\"two\nlines\"\r\n3, \r\n");
  EXPECT_EQ(csv({true, true}), "\"Row\",\" a\"\"b \"\r\n\"1\",\"x, y\"\r\n\"2\",\"two\nlines\"\r\n\"3\",\" \"\r\n");
}

TEST_F(Export, AMarkInFrontOfWhatIsNotAscii) {
  const std::string mark = "\xEF\xBB\xBF", letter = "\xC5\x82";
  const auto beginsHtml = [&](const std::string& text, const tExportRequest& request = {}) {
    EXPECT_EQ(exported(exportFromCompareData, exportHtml, request).substr(0, text.size()), text);
  };
  fill(grid, {{"Row", "v"}, {"1", letter}});
  EXPECT_EQ(exported(exportFromCompareData, exportCsv), mark + "Row,v\r\n1," + letter + "\r\n");
  beginsHtml(mark + "<HTML>");
  fill(grid, {{"Row", "v"}});
  EXPECT_EQ(exported(exportFromCompareData, exportCsv), "Row,v\r\n");
  beginsHtml("<HTML>");
  tExportRequest note;
  note.strLimitText = letter;
  beginsHtml("<HTML>", note);
  note.lngLimitCount = 1;
  beginsHtml(mark + "<HTML>", note);
  source.lblTableName[1] = letter;
  beginsHtml(mark + "<HTML>");
}

TEST_F(Export, CancelledAtRowFiveHasFourRows) {
  fillRows(grid, 1234);
  fillRows(report, 6);
  struct Case {
    std::int32_t mode, type;
    std::string end;
  };
  const std::string row4 = lines("\n[CCCCC 000000 4]\n[FFFFFF 000000 x]\n</TR>\n");
  for (const Case& each : {Case{exportFromCompareData, exportHtml, row4},
                           {exportFromDataView, exportCsv, "4,x\r\n"},
                           {exportFromDataAnalyze, exportHtml, row4},
                           {exportFromDataAnalyze, exportCsv, "4,x\r\n"}}) {
    int yields = 0;
    bool pressed = false;
    test.host.boxes.clear();
    test.host.onDoEvents = [&] {
      ++yields;
      if (pressed || shown->lblGen1.text().find("5 of ") != 0) return;
      pressed = true;
      EXPECT_EQ(shown->lblGen1.text(), each.mode == exportFromDataAnalyze ? "5 of 6" : "5 of 1,234");
      EXPECT_TRUE(shown->ProgressBar.visible() && !shown->optGen[0].visible() && !shown->cmdOK.enabled());
      EXPECT_EQ(test.host.pointer(), Pointer::Hourglass);
      shown->cmdCancel.personClicks();
    };
    const tExportResult result = show(each.mode, {path("out"), each.type, 0, "", true, false});
    EXPECT_FALSE(result.blnOK);
    EXPECT_EQ(result.strPath, "");
    const std::string text = written("out");
    EXPECT_EQ(text.substr(text.size() - each.end.size()), each.end);
    EXPECT_EQ(test.host.boxes.size(), 1U) << "nothing is asked";
    EXPECT_EQ(box(0), ": Operation cancelled by user.");
    EXPECT_EQ(test.host.boxes[0].icon, Icon::Information);
    EXPECT_EQ(yields, (each.mode == exportFromDataView ? 6 : 5) + 1) << "one before each row, one of the button";
    EXPECT_EQ(test.host.pointer(), Pointer::Default);
  }
}

TEST_F(Export, APersonChoosesFormatFileAndWrapping) {
  fill(grid, {{"Row", "v"}, {"1", "x"}});
  struct Case {
    std::int32_t mode;
    std::size_t option;
    Answer wrap;
    bool blnAuto, wrapBefore, wrapAfter;
    std::string dialog, text;
  };
  const std::string csv =
      "Save Excel - (C)omma (S)eparated (V)alues Export File|Export Files (*.csv)|*.csv|csv|20260102.csv";
  const std::string html =
      "Save (H)yper (T)est (M)arkup (L)anguage Export File|Export Files (*.htm)|*.htm|htm|20260102.htm";
  for (const Case& each :
       {Case{exportFromDataView, 1, Answer::Yes, false, false, true, csv, "\"Row\",\"v\"\r\n\"1\",\"x\"\r\n"},
        {exportFromCompareData, 1, Answer::No, false, true, false, csv, "Row,v\r\n1,x\r\n"},
        {exportFromCompareData, 1, Answer::No, true, true, true, csv, "Row,v\r\n1,x\r\n"},
        {exportFromDataView, 0, Answer::Cancel, false, true, true, html, "<HTML>"}}) {
    test.host.boxes.clear();
    test.host.fileDialogs.clear();
    test.host.opened.clear();
    test.host.files = {path("mine")};
    if (each.option == 1) test.host.answers.push_back(each.wrap);
    test.host.answers.push_back(Answer::Yes);
    const tExportResult result =
        show(each.mode, {"", exportNone, 0, "", each.blnAuto, each.wrapBefore}, [&](frmExport& window) {
          EXPECT_TRUE(window.optGen[0].chosen() && !window.ProgressBar.visible());
          window.optGen[each.option].choose();
          window.cmdOK.personClicks();
          EXPECT_TRUE(window.closed() && window.optGen[0].visible() && !window.ProgressBar.visible());
        });
    EXPECT_TRUE(result.blnOK);
    EXPECT_EQ(result.lngType, each.option == 1 ? exportCsv : exportHtml);
    EXPECT_EQ(result.blnWrapInQuot, each.wrapAfter);
    const FileDialog& dialog = test.host.fileDialogs.at(0);
    EXPECT_EQ(dialog.title + "|" + dialog.filter + "|" + dialog.defaultExtension + "|" +
                  dialog.defaultFile.substr(path("").size()),
              each.dialog);
    EXPECT_EQ(dialog.defaultFile.find(test.program.main.gstrDataPath), 0U);
    EXPECT_EQ(written("mine").substr(0, each.text.size()), each.text);
    EXPECT_EQ(test.host.opened, std::vector<std::string>{path("mine")});
    if (each.option == 1) {
      EXPECT_EQ(
          box(0),
          "Comma Delimited File: Data which has commas in it is split into separate pieces in comma separated "
          "values file.\r\n\r\nTo prevent that, the program can wrap up data into quotation marks.\r\n\r\nIf your "
          "data doesn't have commas, adding quotation marks is not needed.\r\n\r\nDo you want to wrap up data in "
          "quotation marks?");
      EXPECT_EQ(test.host.boxes[0].defaultButton, 2);
      EXPECT_EQ(box(1), "Comma Delimited File Generated: Data was successfully exported to file\r\n\r\n'" +
                            path("mine") + "'\r\n\r\nDo you want to view that file now?");
    } else {
      EXPECT_EQ(box(0), "HTML Code Generated: HTML code was generated and saved in file \r\n\r\n'" + path("mine") +
                            "'\r\n\r\nDo you want to view that file in your browser now?");
    }
  }
}

TEST_F(Export, WhatAReplayAsks) {
  fill(grid, {{"Row"}});
  test.program.main.gblnCloseAfterRun = true;
  EXPECT_TRUE(show(exportFromCompareData, {path("out"), exportCsv, 0, "", true, false}).blnOK);
  EXPECT_TRUE(test.host.boxes.empty());
  test.host.answers = {Answer::Yes};
  test.host.opens = false;
  EXPECT_TRUE(show(exportFromCompareData, {path("out"), exportHtml, 0, "", true, false}).blnOK);
  EXPECT_EQ(box(1), ": Error on LaunchProgram: -1");
}

TEST_F(Export, ACancelledFileDialogWritesNothing) {
  fillRows(grid, 1);
  for (const std::size_t option : {0U, 1U}) {
    test.host.files = {""};
    const tExportResult result = show(exportFromCompareData, {}, [&](frmExport& window) {
      window.optGen[option].choose();
      window.cmdOK.personClicks();
      EXPECT_TRUE(window.closed());
    });
    EXPECT_FALSE(result.blnOK);
    EXPECT_EQ(test.host.beeps, static_cast<int>(option) + 1);
    EXPECT_EQ(box(option), (option == 0 ? "HTML Export File" : "Comma Delimited Export File") +
                               std::string(": The export operation was cancelled.\r\n"));
    EXPECT_EQ(test.host.boxes[option].icon, Icon::Information);
  }
  EXPECT_TRUE(fs::is_empty(test.folder.path()));
}

TEST_F(Export, AnUnknownSourceIsTold) {
  for (const std::int32_t mode : {0, 4}) {
    EXPECT_FALSE(show(mode, {path("out"), exportCsv, 0, "", true, false}).blnOK);
    EXPECT_EQ(test.host.boxes.back().text,
              "Error in cmdOK_Click, wrong value of mlngMode\r\nmlngMode = " + std::to_string(mode));
  }
}

TEST_F(Export, AFailureIsReportedWithItsRowAndLeavesTheOldFile) {
  fillRows(grid, 3);
  fillRows(report, 2);
  test.folder.write("out", "old");
  struct Case {
    std::int32_t mode, type;
    files::Operation failing;
    const char* procedure;
    const char* row;
  };
  for (const Case& each :
       {Case{exportFromCompareData, exportHtml, files::Operation::Open, "ExportGridToHtml", "Row = 0"},
        {exportFromDataView, exportHtml, files::Operation::Write, "ExportGridToHtml", "Row = 3"},
        {exportFromCompareData, exportCsv, files::Operation::Write, "ExportGridToCSV", "Row = 3"},
        {exportFromDataAnalyze, exportHtml, files::Operation::Write, "ExportRepControlToHtml", "Row = 2"},
        {exportFromDataAnalyze, exportCsv, files::Operation::Rename, "ExportRepControlToCSV", "Row = 2"}}) {
    std::string told;
    test.host.windows = {[&](Form& form) {
      EXPECT_TRUE(shown->optGen[0].visible() && !shown->ProgressBar.visible());
      EXPECT_EQ(test.host.pointer(), Pointer::Default);
      told = dynamic_cast<TextBox&>(*form.find("txtErrDesc")).text();
    }};
    const files::FaultScope fault(
        [&](files::Operation operation, const fs::path&) { return operation == each.failing ? ENOSPC : 0; });
    frmExport window(test.program);
    window.mlngMode = each.mode;
    shown = &window;
    test.host.windows.push_back([](Form&) { ADD_FAILURE() << "the window didn't close"; });
    EXPECT_FALSE(window.ShowUp(source, {path("out"), each.type, 0, "", true, false}).blnOK);
    EXPECT_NE(told.find(std::string("Error 61 (frmExport:") + each.procedure + ")"), std::string::npos) << told;
    EXPECT_EQ(told.substr(told.rfind("\r\n") + 2), each.row);
  }
  EXPECT_EQ(written("out"), "old");
  EXPECT_EQ(std::distance(fs::directory_iterator(test.folder.path()), {}), 1) << "nothing else is left";
}

TEST_F(Export, ClosingTheWindowCancels) {
  fillRows(grid, 3);
  test.host.onDoEvents = [&] { EXPECT_TRUE(shown->closeRequested()); };
  EXPECT_FALSE(show(exportFromCompareData, {path("out"), exportCsv, 0, "", true, false}).blnOK);
  EXPECT_EQ(written("out"), "");
  EXPECT_EQ(box(0), ": Operation cancelled by user.");
}

TEST_F(Export, ColoursAndNames) {
  EXPECT_EQ(RGBToHTMLColor(255), "FF0000");
  EXPECT_EQ(RGBToHTMLColor(0), "000000");
  EXPECT_EQ(RGBToHTMLColor(0x00FF8001), "0180FF");
  EXPECT_EQ(GetDefaultExportFileName(test.host, ""), "20260102.txt");
}

}  // namespace
}  // namespace qrel
