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

template <class... Text>
static void Delete(Text*&... results) {
    ((delete results, results = nullptr), ...);
}

void TickerResults::Free() { Delete(topic, fileName, inboxPath, sender, userDataPath); }
