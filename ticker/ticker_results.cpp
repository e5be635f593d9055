#include "ticker/ticker_results.h"

TickerResults tickerResults;

void TickerResults::Reset() {
    for (ResultText** result : {&topic, &fileName, &sender}) {
        Make(*result);
        (*result)->Empty();
    }
    Make(userDataPath);
    EmptyUserDataPath();
}

template <class Text>
static void Delete(Text*& result) {
    delete result;
    result = nullptr;
}

void TickerResults::Free() {
    Delete(topic);
    Delete(fileName);
    Delete(inboxPath);
    Delete(sender);
    Delete(userDataPath);
}
