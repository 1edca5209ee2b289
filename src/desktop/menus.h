// Menus of the models as Qt's.
#pragma once

#include <functional>
#include <vector>

class QWidget;

namespace qrel {

struct MenuItem;

// Adds the items to a menu, a menu bar or a tool bar. `choose` gets the id of the item that a person chose.
void addItems(QWidget& menu, const std::vector<MenuItem>& items, const std::function<void(long id)>& choose);

}  // namespace qrel
