#pragma once

#include "resident/core/jx_api.h"

// What programs show in a list box derives from it.
class JX_API RbListBoxItem {
public:
    RbListBoxItem();
    virtual ~RbListBoxItem();
};
