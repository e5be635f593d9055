#include "ticker/ticker_results.h"

#include <initializer_list>

TickerResults tickerResults;

void TickerResults::Make(RBString*& result) {
    if (!result)
        result = new RBString;
}

void TickerResults::Reset() {
    for (RBString** result : {&topic, &fileName, &sender, &userDataPath}) {
        if (*result)
            (*result)->reset();
        else
            Make(*result);
    }
}

void TickerResults::Free() {
    for (RBString** result : {&topic, &fileName, &inboxPath, &sender, &userDataPath}) {
        delete *result;
        *result = nullptr;
    }
}
