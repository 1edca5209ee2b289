// One model of every window, for tests that walk them all.
#pragma once

#include <memory>
#include <vector>

#include "app/frmErrorReport.h"
#include "compare/all/frmCompareAll.h"
#include "compare/all/frmCompareAllTables.h"
#include "compare/all/frmListObjects.h"
#include "compare/data/frmCompareData.h"
#include "compare/data/frmCompareDataOptions.h"
#include "compare/data/frmCompareDataValidation.h"
#include "compare/data/frmCompareStatus.h"
#include "compare/data/frmDataAnalyze.h"
#include "compare/data/frmDataView.h"
#include "compare/structure/frmColorSchema.h"
#include "compare/structure/frmIgnoreColumnsAdd.h"
#include "compare/structure/frmIgnoreColumnsView.h"
#include "db/frmAddServer.h"
#include "db/frmDeleteServer.h"
#include "db/frmFilterBySchema.h"
#include "db/frmLoadScripts.h"
#include "process/frmSaveCompRun.h"
#include "process/frmSaveComparison.h"
#include "report/frmExport.h"
#include "report/frmReport.h"
#include "tests/support.h"
#include "ui/frmCompareAndPrint.h"
#include "ui/frmMain.h"
#include "ui/tools/frmAbout.h"
#include "ui/tools/frmAttachDb.h"
#include "ui/tools/frmGetDbInfo.h"
#include "ui/tools/frmOptions.h"
#include "ui/tools/frmSearchForObject_Gen.h"
#include "ui/tools/frmTip.h"

namespace qrel {

struct AllForms {
  explicit AllForms(TestProgram& test) : main(test.program), steps(test.program, main) {
    Program& program = test.program;
    others.push_back(std::make_unique<frmReport>(program));
    others.push_back(std::make_unique<frmExport>(program));
    others.push_back(std::make_unique<frmCompareAll>(program));
    others.push_back(std::make_unique<frmCompareAllTables>(program));
    others.push_back(std::make_unique<frmListObjects>(program));
    others.push_back(std::make_unique<frmAddServer>(program));
    others.push_back(std::make_unique<frmDeleteServer>(program));
    others.push_back(std::make_unique<frmLoadScripts>(program, test.loader));
    others.push_back(std::make_unique<frmErrorReport>(test.host, tErrorReport{}));
    others.push_back(std::make_unique<frmFilterBySchema>(program));
    others.push_back(std::make_unique<frmColorSchema>());
    others.push_back(std::make_unique<frmCompareAndPrint>(program, main.workspace, steps));
    others.push_back(std::make_unique<frmIgnoreColumnsAdd>(program));
    others.push_back(std::make_unique<frmIgnoreColumnsView>(program));
    others.push_back(std::make_unique<frmCompareDataOptions>(program));
    others.push_back(std::make_unique<frmCompareStatus>(program));
    others.push_back(std::make_unique<frmCompareDataValidation>(program));
    others.push_back(std::make_unique<frmCompareData>(program));
    others.push_back(std::make_unique<frmSaveComparison>(program));
    others.push_back(std::make_unique<frmSaveCompRun>(program));
    others.push_back(std::make_unique<frmDataAnalyze>(program));
    others.push_back(std::make_unique<frmDataView>(program));
    others.push_back(std::make_unique<frmAbout>(program));
    others.push_back(std::make_unique<frmAttachDb>(program));
    others.push_back(std::make_unique<frmGetDbInfo>(program));
    others.push_back(std::make_unique<frmOptions>(program));
    others.push_back(std::make_unique<frmSearchForObject_Gen>(program));
    others.push_back(std::make_unique<frmTip>(program));
    all.push_back(&main);
    for (const auto& each : others) all.push_back(each.get());
  }

  frmMain main;
  MainCompare steps;
  std::vector<std::unique_ptr<Form>> others;
  std::vector<Form*> all;
};

}  // namespace qrel
