#include "system/accounts/rb_list_box_item.h"

RbListBoxItem::RbListBoxItem() = default;

RbListBoxItem::~RbListBoxItem() = default;
