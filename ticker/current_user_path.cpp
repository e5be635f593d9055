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
        return false;
    TickerResults::Make(tickerResults.inboxPath);
    TickerResults::Make(tickerResults.userDataPath);
    JxBackgndData data;
    if (!ReadUserData(data))
        return false;
    FileSpec inbox;
    inbox.SetSpecPart(data.mstrSettings[JxBackgndData::keMailDirectory], FileSpec::keAsPath);
    inbox.SetSpecPart(data.mstrSettings[JxBackgndData::keDFileName], FileSpec::keAsParts);
    tickerResults.inboxPath->puts(inbox.FullFileSpec());
    JxCurrentUserDataFile::GetUserDataFileSpec(*tickerResults.userDataPath);
    *inboxPath = TickerResults::TextOf(tickerResults.inboxPath);
    *userDataPath = TickerResults::TextOf(tickerResults.userDataPath);
    return true;
}
