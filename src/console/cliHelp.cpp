#include "console/cliHelp.h"

#include <algorithm>
#include <numeric>

#include "console/exitCode.h"
#include "platform/text.h"

namespace qrel {

namespace {

struct Examples {
  const char* command;
  const char* lines;
};
constexpr Examples examples[] = {
    {"load",
     "  qrel load demo/Shop shop.sql\n"
     "  qrel load demo/Shop schema/ --replace --variable Env=test\n"},
    {"servers", "  qrel servers\n"},
    {"servers add", "  qrel servers add sql01 --port 14330 --login reader --trust-certificate\n"},
    {"servers test", "  qrel servers test sql01\n"},
    {"servers remove", "  qrel servers remove sql01 --yes\n"},
    {"databases", "  qrel databases sql01\n"},
    {"objects",
     "  qrel objects sql01/Shop\n"
     "  qrel objects schema/ --type tables | cut -f1\n"},
    {"text", "  qrel text sql01/Shop --type procedures dbo.PlaceOrder >PlaceOrder.sql\n"},
    {"options",
     "  qrel options\n"
     "  qrel options CaseSensitive\n"
     "  qrel options CaseSensitive off\n"},
    {"compare",
     "  qrel compare sql01/Shop schema/ --types tables,views\n"
     "  qrel compare sql01/Shop sql02/Shop --only Orders --details\n"
     "  qrel compare sql01/Shop sql02/Shop --type tables --object Orders --aligned\n"},
    {"data",
     "  qrel data sql01/Shop sql02/Shop --table Orders --key OrderId --csv differences.csv\n"
     "  qrel data sql01/Shop sql02/Shop --all\n"},
    {"view", "  qrel view sql01/Shop --table Orders --rows 20\n"},
    {"analyze", "  qrel analyze sql01/Shop --table Orders --least\n"},
    {"script",
     "  qrel script sql01/Shop --type views OpenOrders\n"
     "  qrel script sql01/Shop sql02/Shop --table Orders\n"},
    {"references", "  qrel references sql01/Shop --all --sure\n"},
    {"processes", "  qrel processes --json\n"},
    {"processes show", "  qrel processes show Nightly\n"},
    {"processes remove", "  qrel processes remove Nightly\n"},
    {"run", "  qrel run Nightly --export differences.html\n"},
};

// How many letters must be changed, added, left out or swapped with their neighbour.
std::size_t distance(std::string_view a, std::string_view b) {
  std::vector<std::vector<std::size_t>> cost(a.size() + 1, std::vector<std::size_t>(b.size() + 1));
  for (std::size_t i = 0; i <= a.size(); ++i) cost[i][0] = i;
  std::iota(cost[0].begin(), cost[0].end(), std::size_t{0});
  for (std::size_t i = 1; i <= a.size(); ++i) {
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const std::size_t change = cost[i - 1][j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1);
      cost[i][j] = std::min({change, cost[i - 1][j] + 1, cost[i][j - 1] + 1});
      if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1])
        cost[i][j] = std::min(cost[i][j], cost[i - 2][j - 2] + 1);
    }
  }
  return cost[a.size()][b.size()];
}

}  // namespace

std::string helpFooter(std::string_view command, std::string_view note) {
  std::string footer(note);
  if (!footer.empty()) footer += "\n\n";
  footer +=
      "Every command:\n"
      "  --set OPTION=VALUE          an option for this run; \"qrel options\" lists them\n"
      "  --allow-skipped             skipped statements of scripts don't make the end incomplete\n"
      "  --color auto|always|never   colours; auto: on a terminal, unless NO_COLOR is set\n\n";
  const auto* found = std::find_if(std::begin(examples), std::end(examples),
                                   [&](const Examples& each) { return each.command == command; });
  if (found != std::end(examples)) footer += std::string("Examples:\n") + found->lines + '\n';
  return footer + exitCodeHelp;
}

std::string nearestWord(std::string_view written, const std::vector<std::string>& words) {
  std::string best;
  std::size_t least = std::min<std::size_t>(3, (written.size() + 1) / 2 + 1);
  if (written.size() > 64) return best;
  for (const std::string& word : words) {
    const std::string lower = lowerCase(written), candidate = lowerCase(word);
    const bool begins = lower.size() >= 2 && candidate.starts_with(lower);
    const std::size_t cost = begins ? 0 : distance(lower, candidate);
    if (cost >= least) continue;
    least = cost;
    best = word;
  }
  return best;
}

}  // namespace qrel
