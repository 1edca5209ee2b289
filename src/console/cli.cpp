#include <CLI/CLI.hpp>

#include <cstdlib>
#include <functional>
#include <iostream>
#include <streambuf>
#include <string_view>

#include "console/cliHelp.h"
#include "console/commands.h"
#include "platform/error.h"
#include "platform/system.h"
#include "platform/text.h"
#include "platform/visibleText.h"

namespace qrel {

namespace {

// The command line as parsed. Exactly one command is set by CLI11's callbacks.
struct CommandLine {
  std::vector<std::string> sets;
  bool allowSkipped = false;
  std::string colour = "auto";
  bool quiet = false;
  bool yes = false;   // don't ask
  bool crlf = false;  // of a text's line ends
  LoadArguments load;
  AddServerArguments addServer;
  CompareArguments compare;
  DataArguments data;
  TableArguments table;
  ScriptArguments script;
  ReferencesArguments references;
  RunArguments run;
  bool json = false;
  std::string name, side, type, object;
  std::optional<std::string> value;
  std::function<ExitCode(Console&)> command;
};

using Command = std::function<ExitCode(Console&)>;

void addLoad(CLI::App& app, CommandLine& line) {
  CLI::App* load = app.add_subcommand("load", "Load T-SQL scripts into a database of an embedded server");
  load->add_option("SERVER/DATABASE", line.load.target, "made when it isn't there")->required();
  load->add_option("FILE-OR-FOLDER", line.load.paths, ".sql files, folders of them, or database projects (.sqlproj)")
      ->required();
  CLI::Option* replace = load->add_flag("--replace", line.load.replace, "empty an existing database first");
  load->add_flag("--add", line.load.add, "add to what an existing database holds")->excludes(replace);
  CLI::Option* version = load->add_option("--version", line.load.version,
                                          "the server's product version, such as 8.00.2039 or 11.0.2100.60");
  load->add_option("--variable", line.load.variables, "NAME=VALUE for $(NAME) in the scripts")->allow_extra_args(false);
  load->callback([&line, version] {
    line.load.versionGiven = version->count() > 0;
    line.command = [&line](Console& console) { return runLoad(console, line.load); };
  });
}

void addServers(CLI::App& app, CommandLine& line) {
  CLI::App* servers = app.add_subcommand("servers", "List, add, test or remove servers");
  CLI::App* add = servers->add_subcommand("add", "Add a server; a password comes from QREL_PASSWORD, or is asked for");
  add->add_option("NAME", line.addServer.name)->required();
  add->add_option("--database", line.addServer.database, "the database to begin with")->capture_default_str();
  add->add_option("--login", line.addServer.login, "SQL Server authentication under this name");
  add->add_flag("--localdb", line.addServer.localDb, "a LocalDB instance, (localdb)\\Name");
  add->add_option("--port", line.addServer.port, "the same as NAME,PORT")->check(CLI::Range(1, 65535));
  add->add_option("--encrypt", line.addServer.encrypt, "no for a server that can't; strict: Microsoft's driver 18")
      ->check(CLI::IsMember({"yes", "no", "strict"}));
  add->add_flag("--trust-certificate", line.addServer.trustCertificate, "encrypt, whoever the server may be");
  add->add_option("--driver", line.addServer.driver, "its ODBC driver, when it isn't that of the option OdbcDriver");
  CLI::App* test = servers->add_subcommand("test", "Connect to a server and tell how it is reached");
  test->add_option("NAME", line.name, "of the list; or any other, with Windows authentication")->required();
  CLI::App* remove = servers->add_subcommand("remove", "Remove a server from the list");
  remove->add_option("NAME", line.name)->required();
  remove->add_flag("--yes", line.yes, "don't ask; needed where there is no terminal");
  servers->callback([&line, add, remove, test] {
    line.command = [&line, add, remove, test](Console& console) {
      if (add->parsed()) return runServersAdd(console, line.addServer);
      if (test->parsed()) return runServersTest(console, line.name);
      if (remove->parsed()) return runServersRemove(console, line.name, line.yes);
      return runServers(console);
    };
  });
}

void addLists(CLI::App& app, CommandLine& line) {
  CLI::App* databases = app.add_subcommand("databases", "List the databases of a server");
  databases->add_option("SERVER", line.name)->required();
  databases->callback(
      [&line] { line.command = [&line](Console& console) { return runDatabases(console, line.name); }; });

  CLI::App* objects = app.add_subcommand("objects", "List objects: name, date, id and type, with tabs between");
  objects->add_option("SIDE", line.side, "SERVER/DATABASE, a .sql file or a folder of them")->required();
  objects->add_option("--type", line.type,
                      "tables, procedures, functions, views, triggers, relationships, constraints");
  objects->callback(
      [&line] { line.command = [&line](Console& console) { return runObjects(console, line.side, line.type); }; });

  CLI::App* text = app.add_subcommand("text", "Print an object's text and nothing else");
  text->add_option("SIDE", line.side)->required();
  text->add_option("--type", line.type)->required();
  text->add_option("NAME", line.object)->required();
  text->add_flag("--crlf", line.crlf, "lines end with CR LF where the text has it, not with LF");
  text->callback([&line] {
    line.command = [&line](Console& console) { return runText(console, line.side, line.type, line.object, line.crlf); };
  });

  CLI::App* options = app.add_subcommand("options", "List the options with their values, or change one for good");
  options->add_option("NAME", line.name, "only this one");
  options->add_option("VALUE", line.value, "its value from now on");
  options->callback(
      [&line] { line.command = [&line](Console& console) { return runOptions(console, line.name, line.value); }; });
}

void addProcesses(CLI::App& app, CommandLine& line) {
  CLI::App* processes = app.add_subcommand("processes", "List, show or remove saved comparison processes");
  processes->add_flag("--json", line.json, "the list as JSON");
  CLI::App* show = processes->add_subcommand("show", "Print what a process does");
  show->add_option("NAME", line.name, "its name, or its id")->required();
  CLI::App* remove = processes->add_subcommand("remove", "Remove a process; what it has written stays");
  remove->add_option("NAME", line.name, "its name, or its id")->required();
  processes->callback([&line, show, remove] {
    line.command = [&line, show, remove](Console& console) {
      if (show->parsed()) return runProcessesShow(console, line.name);
      if (remove->parsed()) return runProcessesRemove(console, line.name);
      return runProcesses(console, line.json);
    };
  });

  CLI::App* run = app.add_subcommand("run", "Run a saved comparison process again, with nobody there");
  run->add_option("PROCESS", line.run.process, "its name, or its id")->required();
  run->add_option("--export", line.run.exportFile, "write this file instead of the stored one");
  run->add_option("--format", line.run.format, "of the file")
      ->check(CLI::IsMember({"html", "csv", "report"}, CLI::ignore_case));
  run->callback([&line] { line.command = [&line](Console& console) { return runProcess(console, line.run); }; });
}

void addSave(CLI::App* command, SaveArguments& save) {
  command->add_option("--save", save.name, "save the comparison as a process of this name, for \"qrel run\"");
  command->add_flag("--replace", save.replace, "over a process that has the name");
  command->add_flag("--print", save.print, "the process prints its report");
  command->add_flag("--auto-close", save.autoClose, "the window closes when it has run the process");
}

// Where a table is written to; `what` says what stands in it.
void addExport(CLI::App* command, ExportArguments& arguments, const std::string& what) {
  CLI::Option* csv = command->add_option("--csv", arguments.csv, "write " + what + " as comma separated values");
  CLI::Option* html = command->add_option("--html", arguments.html, "write " + what + " as an HTML table");
  command->add_flag("--quote", arguments.quote, "CSV: every value between quotation marks")->needs(csv);
  command->add_flag("--rfc4180", arguments.rfc4180, "CSV: quotation marks where they are needed, doubled within values")
      ->needs(csv);
  csv->excludes(html);
}

// How a run over whole databases tells what it has found, besides its report.
std::vector<CLI::Option*> addForms(CLI::App* command, RunForms& forms) {
  return {command->add_flag("--brief", forms.brief, "print differences and counts, not the report"),
          command->add_flag("--no-time", forms.noTime, "the report without its line about the time"),
          command->add_option("--junit", forms.junit, "write this file for a build server: a case per object")};
}

void addCompare(CLI::App& app, CommandLine& line) {
  CLI::App* compare = app.add_subcommand("compare", "Compare two databases, or one object of each");
  compare->add_option("SOURCE", line.compare.source, "SERVER/DATABASE, a .sql file or a folder of them")->required();
  compare->add_option("TARGET", line.compare.target)->required();
  CLI::Option* types = compare->add_option("--types", line.compare.types, "types with commas between, or all");
  CLI::Option* details = compare->add_flag("--details", line.compare.details, "with the lines that differ");
  CLI::Option* only =
      compare->add_option("--only", line.compare.only, "compare only objects of this name")->allow_extra_args(false);
  CLI::Option* report = compare->add_option("--report", line.compare.report, "write the report to this file too");
  compare->add_option("--source-schemas", line.compare.schemas[0],
                      "only objects of these schemas, with commas between");
  compare->add_option("--target-schemas", line.compare.schemas[1], "the same for Target");
  CLI::Option* type = compare->add_option("--type", line.compare.type, "the type of --object");
  CLI::Option* object =
      compare->add_option("--object", line.compare.objects, "the name, and the Target's name when it is another")
          ->expected(1, 2);
  compare
      ->add_flag("--aligned", line.compare.aligned,
                 "the texts of one pair in two columns, lines that belong together side by side")
      ->needs(object);
  CLI::Option* unified = compare->add_flag("--unified", line.compare.unified, "a patch of one pair's texts instead");
  unified->needs(object)->excludes(compare->get_option("--aligned"));
  compare->add_option("--context", line.compare.context, "lines around each change of --unified")
      ->needs(unified)
      ->check(CLI::Range(0, 1000000))
      ->capture_default_str();
  for (CLI::Option* other : {types, details, only, report}) object->excludes(other);
  for (CLI::Option* form : addForms(compare, line.compare.forms)) object->excludes(form);
  compare->add_flag("-q,--quiet", line.quiet, "print nothing: the exit code alone");
  addSave(compare, line.compare.save);
  type->needs(object);
  compare->callback([&line] {
    line.command = [&line](Console& console) {
      return line.compare.objects.empty() ? runCompareAll(console, line.compare)
                                          : runComparePair(console, line.compare);
    };
  });
}

void addData(CLI::App& app, CommandLine& line) {
  CLI::App* data = app.add_subcommand("data", "Compare the records of tables, by position or by key");
  data->add_option("SOURCE", line.data.source, "SERVER/DATABASE, a .sql file or a folder of them")->required();
  data->add_option("TARGET", line.data.target)->required();
  CLI::Option* table =
      data->add_option("--table", line.data.tables, "the table; several are compared in turn")->allow_extra_args(false);
  CLI::Option* tables =
      data->add_option("--tables", line.data.selected, "these tables in one report, with commas between");
  CLI::Option* all = data->add_flag("--all", line.data.all, "all tables in one report");
  data->add_option("--report", line.data.report, "write that report to this file too");
  data->add_flag("--validate", line.data.validate, "don't compare: does the key tell the records of each side apart?");
  data->add_option("--target-table", line.data.targetTable, "the Target's table when its name is another");
  data->add_option("--key", line.data.keys[0], "compare by key: up to three columns with commas between");
  data->add_option("--target-key", line.data.keys[1], "the Target's key columns when their names are others");
  data->add_option("--sort", line.data.sorts[0], "order of the records: up to three columns");
  data->add_option("--target-sort", line.data.sorts[1], "the Target's order when its names are others");
  data->add_option("--offset", line.data.offsets[0], "the first record to compare, from 1 on")
      ->check(CLI::Range(1, 32767));
  data->add_option("--target-offset", line.data.offsets[1], "the same for Target")->check(CLI::Range(1, 32767));
  addExport(data, line.data.differences, "the differences");
  const std::vector<CLI::Option*> forms = addForms(data, line.data.forms);
  data->add_flag("-q,--quiet", line.quiet, "print nothing: the exit code alone");
  data->add_flag("--vertical", line.data.vertical, "print the differences with a line per value");
  data->add_flag("--only-differing", line.data.onlyDiffering, "print only the columns that differ, and the key");
  addSave(data, line.data.save);
  for (CLI::Option* many : {tables, all})
    for (CLI::Option* other : data->get_options())
      for (const char* ofOne : {"table", "target-table", "key", "target-key", "sort", "target-sort", "offset",
                                "target-offset", "validate", "csv", "html", "vertical", "only-differing"})
        if (other->check_lname(ofOne)) many->excludes(other);
  tables->excludes(all);
  data->callback([&line, table, forms] {
    const DataArguments& given = line.data;
    const bool many = given.all || !given.selected.empty();
    if (!many && table->count() == 0) throw CLI::RequiredError("--table, --tables or --all");
    if (!many && !given.report.empty()) throw CLI::RequiresError("--report", "--tables or --all");
    for (const CLI::Option* form : forms)
      if (!many && form->count() > 0) throw CLI::RequiresError(form->get_name(), "--tables or --all");
    if (given.save.given() && given.validate) throw CLI::ExcludesError("--save", "--validate");
    // A process keeps the told form alone.
    if (given.save.given() && given.differences.rfc4180) throw CLI::ExcludesError("--save", "--rfc4180");
    if (given.validate && given.keys[0].empty()) throw CLI::RequiresError("--validate", "--key");
    line.command = [&given, many](Console& console) {
      return given.validate ? runValidate(console, given) : many ? runDataAll(console, given) : runData(console, given);
    };
  });
}

void addTableTools(CLI::App& app, CommandLine& line) {
  const auto add = [&](const char* name, const char* what, const char* rows,
                       ExitCode (*run)(Console&, const TableArguments&)) {
    CLI::App* command = app.add_subcommand(name, what);
    command->add_option("SIDE", line.table.side, "SERVER/DATABASE, a .sql file or a folder of them")->required();
    command->add_option("--table", line.table.table)->required();
    command->add_option("--rows", line.table.rows, rows)->check(CLI::PositiveNumber);
    addExport(command, line.table.shown, "the table");
    command->callback(
        [&line, run] { line.command = [&line, run](Console& console) { return run(console, line.table); }; });
    return command;
  };
  add("view", "Print the records of a table", "the first records only", runView);
  CLI::App* analyze = add("analyze", "Count the values of each column of a table",
                          "analyze so many records, those that the server gives", runAnalyze);
  analyze->add_flag("--least", line.table.least, "the ten least frequent values instead of the most frequent ones");
}

void addScripts(CLI::App& app, CommandLine& line) {
  CLI::App* script =
      app.add_subcommand("script", "Print the script that makes an object, or changes a table into another");
  script->add_option("SIDE", line.script.source, "SERVER/DATABASE, a .sql file or a folder of them")->required();
  script->add_option("NAME", line.script.second, "the object; with --table the Target's SERVER/DATABASE")->required();
  CLI::Option* type = script->add_option("--type", line.script.type, "the object's type");
  CLI::Option* table = script->add_option("--table", line.script.table, "the table: a draft that changes the Target's");
  script->add_option("--target-table", line.script.targetTable, "the Target's table when its name is another")
      ->needs(table);
  type->excludes(table);
  script->callback([&line, type, table] {
    if (type->count() + table->count() == 0) throw CLI::RequiredError("--type or --table");
    line.command = [&line](Console& console) { return runScript(console, line.script); };
  });

  CLI::App* references = app.add_subcommand("references", "List words of an object's text that name nothing there");
  references->add_option("SIDE", line.references.side, "SERVER/DATABASE, a .sql file or a folder of them")->required();
  CLI::Option* name = references->add_option("NAME", line.references.name, "the object");
  CLI::Option* ofType =
      references->add_option("--type", line.references.type, "procedures, functions, views, triggers");
  CLI::Option* all = references->add_flag("--all", line.references.all, "all objects of the type, or of all four");
  references->add_flag("--sure", line.references.sure, "leave out columns, built-in functions, aliases and the like");
  all->excludes(name);
  name->needs(ofType);
  references->callback([&line, name, all] {
    if (name->count() + all->count() == 0) throw CLI::RequiredError("NAME or --all");
    line.command = [&line](Console& console) { return runReferences(console, line.references); };
  });
}

// What a command's help says first behind its options.
std::string_view noteOf(std::string_view command) {
  if (command == "run")
    return "Every question is answered with its default button; messages go to standard error with the time.";
  if (command == "data")
    return "Without key, order and offset each table is compared as was last chosen for it in the window.";
  return {};
}

void addFooters(CLI::App& parent, const std::string& before) {
  for (CLI::App* command : parent.get_subcommands([](CLI::App*) { return true; })) {
    const std::string name = before + command->get_name();
    command->footer(helpFooter(name, noteOf(name)));
    addFooters(*command, name + ' ');
  }
}

void describe(CLI::App& app, CommandLine& line) {
  app.require_subcommand(1);
  app.set_version_flag("--version", std::string("qrel ") + programVersion);
  app.add_option("--set", line.sets, "OPTION=VALUE for this run; see \"qrel options\"")->allow_extra_args(false);
  app.add_flag("--allow-skipped", line.allowSkipped,
               "statements of scripts that were skipped or refused don't make the end incomplete (exit code 4)");
  app.add_option("--color", line.colour, "auto: on a terminal, unless NO_COLOR is set or TERM is dumb")
      ->check(CLI::IsMember({"auto", "always", "never"}))
      ->capture_default_str();
  app.fallthrough();
  app.footer(exitCodeHelp);
  addLoad(app, line);
  addServers(app, line);
  addLists(app, line);
  addCompare(app, line);
  addData(app, line);
  addTableTools(app, line);
  addScripts(app, line);
  addProcesses(app, line);
  addFooters(app, "");
}

// A word in the place of a command that is none, told with the one that was probably meant; empty: there is no such
// word.
std::string wrongCommand(const CLI::App& app, int argc, const char* const* argv) {
  const CLI::App* parent = &app;
  std::string before;
  for (int i = 1; i < argc; ++i) {
    const std::string_view word = argv[i];
    if (word == "--set" || word == "--color") ++i;
    if (word.starts_with('-')) continue;
    std::vector<std::string> names;
    const CLI::App* found = nullptr;
    for (const CLI::App* command : parent->get_subcommands([](const CLI::App*) { return true; })) {
      names.push_back(command->get_name());
      if (names.back() == word) found = command;
    }
    if (names.empty()) return {};
    if (found) {
      parent = found;
      before += std::string(word) + ' ';
      continue;
    }
    const std::string nearest = nearestWord(word, names);
    std::string told = "\"" + before + visibleText(word) + "\" is no command";
    if (!nearest.empty()) told.append("; did you mean \"").append(before).append(nearest).append("\"?");
    if (nearest.empty()) told += '.';
    return told.append(" \"qrel ").append(before).append("--help\" lists the commands.");
  }
  return {};
}

std::string wrongUsage(const CLI::App* app, const CLI::Error& error) {
  std::string command = "qrel ";
  for (const CLI::App* sub : app->get_subcommands()) command += sub->get_name() + ' ';
  return "qrel: " + visibleText(error.what()) + "\n\"" + command + "--help\" tells how it is used.\n";
}

// A file, a pipe and a terminal that can't show any have no colours unless they are asked for.
bool wantsColours(const std::string& asked, bool terminal) {
  const auto isSet = [](const char* name) {
    const char* value = std::getenv(name);
    return value && *value;
  };
  const char* kind = std::getenv("TERM");
  if (asked != "auto") return asked == "always";
  return terminal && !isSet("NO_COLOR") && !(kind && std::string_view(kind) == "dumb");
}

int finish(std::ostream& err, ExitCode code, const std::string& message) {
  if (!message.empty() && !readerGone()) err << "qrel: " << visibleLines(replaceAll(message, "\r\n", "\n")) << '\n';
  return static_cast<int>(code);
}

// Lists the failed reads however the command ends.
class FailuresList {
 public:
  explicit FailuresList(Console& console) : console_(console) {}
  ~FailuresList() { console_.listReadFailures(); }
  FailuresList(const FailuresList&) = delete;
  FailuresList& operator=(const FailuresList&) = delete;

 private:
  Console& console_;
};

// Takes in everything and keeps nothing.
class Nowhere : public std::streambuf {
 protected:
  int overflow(int byte) override { return traits_type::not_eof(byte); }
  std::streamsize xsputn(const char*, std::streamsize count) override { return count; }
};

const CommandFailure stopped{ExitCode::Stopped, "Operation cancelled by the user."};

int runParsed(CommandLine& line, const char* programFile, std::ostream& given, std::ostream& err) {
  Nowhere nowhere;
  std::ostream silent(&nowhere);
  std::ostream& out = line.quiet ? silent : given;
  try {
    Console console(findFolders(programFile), out, err);
    const StopWatch watch(console.servers.unfinished());
    console.terminal = &out == &std::cout && system::isTerminal(system::Stream::Output);
    console.colours = wantsColours(line.colour, console.terminal);
    if (const int columns = system::terminalColumns(); columns > 0) console.columns = columns;
    console.asks = &err == &std::cerr && system::isTerminal(system::Stream::Input);
    console.progress = &err == &std::cerr && system::isTerminal(system::Stream::Errors);
    const auto heldState = console.data.holdState();  // what a command prints is of one state of each database
    console.allowSkipped = line.allowSkipped;
    console.start(line.sets);
    const FailuresList listed(console);
    const ExitCode code = line.command(console);
    out.flush();
    // A reader that has had enough, as "| head" does, is no fault. What is changed stays changed.
    if (readerGone()) return static_cast<int>(console.changed ? code : ExitCode::Stopped);
    if (!out) return finish(err, ExitCode::CannotRead, "The output could not be written.");
    // What a stop cut short may look like an empty answer or a failed one.
    if (stopRequested() && !console.changed && code != ExitCode::Stopped) throw stopped;
    return static_cast<int>(code);
  } catch (const CommandFailure& failure) {
    const CommandFailure& told = stopRequested() && failure.code == ExitCode::CannotRead ? stopped : failure;
    return finish(err, told.code, told.message);
  } catch (const std::exception& error) {
    return finish(err, ExitCode::CannotRead, describeError(error).description);
  }
}

}  // namespace

int runConsole(int argc, const char* const* argv, std::ostream& out, std::ostream& err) {
  CLI::App app{"Compares two SQL Server databases and says in words what differs.", "qrel"};
  CommandLine line;
  describe(app, line);
  app.failure_message(wrongUsage);
  if (argc < 2) {
    err << app.help();
    return static_cast<int>(ExitCode::Usage);
  }
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    const bool asked = error.get_exit_code() == 0;  // for the help or the version
    const std::string wrong = asked ? "" : wrongCommand(app, argc, argv);
    if (!wrong.empty()) return finish(err, ExitCode::Usage, wrong);
    const int code = app.exit(error, out, err);
    return code == 0 ? 0 : static_cast<int>(ExitCode::Usage);
  }
  return runParsed(line, argv[0], out, err);
}

}  // namespace qrel
