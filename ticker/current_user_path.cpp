#include "resident/files/file_spec.h"
#include "resident/files/open_mode.h"
#include "resident/users/jx_backgnd_data.h"
#include "resident/users/jx_current_user_data_file.h"
#include "ticker/ticker.h"
#include "ticker/ticker_results.h"

// Reads the current user's data; false, with nothing reported, when it cannot be read.
static bool ReadUserData(JxBackgndData& data) {
    JxCurrentUserDataFile file;
    if (!file.OpenUserDataFile(keOpenRead)) {
        file.CloseFailed();
        return false;
    }
    std::fstream& stream = *file.GetStream();
    stream >> data;
    const bool read = stream.good();
    file.Close();
    return read;
}

int __stdcall GetCurUserPath(char** inboxPath, char** userDataPath) {
    if (!inboxPath || !userDataPath)
        return 0;
    TickerResults::Make(tickerResults.inboxPath);
    TickerResults::Make(tickerResults.userDataPath);
    JxBackgndData data;
    if (!ReadUserData(data))
        return 0;
    FileSpec inbox;
    inbox.SetSpecPart(data.mstrSettings[JxBackgndData::keMailDirectory], 1);
    inbox.SetSpecPart(data.mstrSettings[JxBackgndData::keDFileName], 0);
    tickerResults.inboxPath->puts(inbox.FullFileSpec());
    JxCurrentUserDataFile::GetUserDataFileSpec(*tickerResults.userDataPath);
    *inboxPath = TickerResults::TextOf(tickerResults.inboxPath);
    *userDataPath = TickerResults::TextOf(tickerResults.userDataPath);
    return 1;
}
