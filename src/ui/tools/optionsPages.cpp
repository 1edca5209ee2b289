#include "ui/tools/optionsPages.h"

namespace qrel {

namespace {

constexpr const char* general = "General";
constexpr const char* schema = "Schema Comparisons";
constexpr const char* data = "Data Comparisons";

constexpr std::array<OptionsPage, optionsPageCount> pages = {{
    {general, "Filter Offline Databases",
     "Program can filter offline databases before displaying list of server's databases.\r\n\r\n"
     "(For each database in the list, program checks if connection is possible before adding database to the "
     "list.)\r\n\r\n"
     "When this option is OFF, program displays all databases, regardless if they are offline or not."},
    {general, "Timeout",
     "Timeout indicates, in seconds, how long to wait while executing a command before terminating the attempt. "
     "Default is 30.\r\n\r\n"
     "Sometimes due to delays from network traffic or heavy server use, server is not as responsive as usual and "
     "increasing timeout can prevent application from cancelling the attempt.\r\n\r\n"
     "If you set the timeout to zero, Qrel will wait indefinitely until the execution is complete."},
    {schema, "Columns Order",
     "When this option is set on, the program considers two tables with the same columns but ordered differently as "
     "having the same structure.\r\n\r\n"
     "Note: Please note that this option applies not only to tables but also to other objects (like views, "
     "relationships etc)."},
    {schema, "Analyze Constraints",
     "Program can treat Constraints as a separate object type (along with Tables, Procedures, etc).  When this option "
     "is set on, program can perform comparisons just on Constraints.\r\n\r\n"
     "Constraints are dealt with when comparing structures of tables, but in some cases it may be convenient to have "
     "differences in Constraints listed in separate report."},
    {schema, "Auto Save",
     "When this option is set on, every time the user clicks button 'Compare Sel. Proc.' the program will "
     "automatically save the schemas displayed in schema text boxes into external files."},
    {schema, "Ignore System objects",
     "When this option is turned on, all system objects are ignored during comparisons.\r\n\r\n"
     "System stored procedures and UDFs can be found in the master database (for pre-SQL Server 2005) or in hidden "
     "resource database (for SQL Server 2005 or newer).  These objects can be executed from any database and will run "
     "from the context of that database.\r\n\r\n"
     "Since by definition system objects are the same for all databases within given server, comparing system objects "
     "makes sense only when comparing databases from different servers."},
    {schema, "Ignore Indexes", ""},
    {schema, "Ignore Comments",
     "When this option is turned on, all comments in stored procedures, triggers, functions and views are ignored "
     "during comparisons.\r\n\r\n"
     "(SQL Server supports two types of commenting characters:\r\n\r\n"
     "     -- double hyphens, and\r\n\r\n"
     "     /* ... */ forward slash-asterisk character pairs.)"},
    {schema, "Whitespace", ""},
    {schema, "Case Sensitivity",
     "Term 'case sensitivity' describes a program's ability to distinguish between uppercase (capital) and lowercase "
     "(small) letters.\r\n\r\n"
     "A default SQL Server installation is case insensitive, which means that SQL Server will not differentiate "
     "between upper and lower case characters/letters.\r\n\r\n"
     "That is, 'Select' is the same as 'SELECT' or 'select'."},
    {data, "Comparison Options",
     "When this option is set on, the program displays 'Data Comparison Options' screen before comparing data to allow "
     "for customizations of comparison process.\r\n\r\n"
     "When this option is set off, you can still trigger displaying the options dialog by pressing SHIFT key while "
     "clicking 'Compare Data' button on the main screen."},
    {data, "Rows to Display",
     "When comparing data in selected tables, differences are displayed in a table.\r\n\r\n"
     "If the number of rows with different data reaches couple of thousands, it is not practical to display all of "
     "them on the screen.\r\n\r\n"
     "You can specify maximum number of rows to be displayed in differences table."},
    {data, "Cache Size",
     "This property is used to fine-tune server-side cursors.\r\n\r\n"
     "Because the recordset data resides remotely on SQL Server, each time Qrel accesses a record it must make a round "
     "trip to the server.\r\n\r\n"
     "Tuning the Cache Size stores more records locally and makes data access performance much faster.\r\n\r\n"
     "For example, if Cache Size is set to one, only one record at a time is retrieved into local memory."},
    {data, "Cursor Location", ""},
    {data, "Case Sensitivity",
     "Term 'case sensitivity' describes a program's ability to distinguish between uppercase (capital) and lowercase "
     "(small) letters."},
}};

}  // namespace

const std::array<OptionsPage, optionsPageCount>& OptionsPages() { return pages; }

}  // namespace qrel
