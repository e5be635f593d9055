#include "ticker/ticker_results.h"

#include <initializer_list>

TickerResults tickerResults;

void TickerResults::Make(RBString*& result) {
    if (!result)
        result = new RBString;
}

void TickerResults::MakeForRecord() {
    for (RBString** result : {&topic, &fileName, &sender, &userDataPath})
        Make(*result);
}

void TickerResults::Reset() {
    MakeForRecord();
    for (RBString* result : {topic, fileName, sender})
        result->reset();
    EmptyUserDataPath();
}

void TickerResults::EmptyUserDataPath() { userDataPath->Truncate(0); }

void TickerResults::Free() {
    for (RBString** result : {&topic, &fileName, &inboxPath, &sender, &userDataPath}) {
        delete *result;
        *result = nullptr;
    }
}
