#include "resident/users/jx_pop_user_verify.h"

#include <initializer_list>

#include "resident/files/open_mode.h"
#include "resident/runtime/check.h"
#include "resident/users/jx_current_user_data_file.h"

static constexpr Reporter kReports("JXRESIDT\\POPURVFY.CPP");

JxPopUserVerify::JxPopUserVerify(const char* userName, const char* password, const char* ipAddress,
                                 const char* dialupName)
    : mpszOutputUserName(userName), mpszOutputPassword(password), mpszOutputIPAddress(ipAddress),
      mpszOutputDialupName(dialupName) {}

JxPopUserVerify::JxPopUserVerify() : JxPopUserVerify(nullptr, nullptr, nullptr, nullptr) {}

JxPopUserVerify::~JxPopUserVerify() = default;

int JxPopUserVerify::WriteDataToUserFile() {
    kReports.Check(mpszOutputUserName, "mpszOutputUserName");
    kReports.Check(mpszOutputPassword, "mpszOutputPassword");
    kReports.Check(mpszOutputIPAddress, "mpszOutputIPAddress");
    kReports.Check(mpszOutputDialupName, "mpszOutputDialupName");
    JxCurrentUserDataFile file;
    if (!file.OpenUserDataFile(keOpenRewrite)) {
        file.CloseFailed();
        return false;
    }
    std::fstream& stream = *file.GetStream();
    for (const char* text :
         {mpszOutputUserName, mpszOutputPassword, mpszOutputIPAddress, mpszOutputDialupName})
        if (stream.good())
            stream << RBString(text);
    const int written = stream.flush().good();
    file.Close();
    return written;
}

int JxPopUserVerify::ReadDataFromUserFile(RBString& userName, RBString& password,
                                          RBString& ipAddress, RBString& dialupName) {
    JxCurrentUserDataFile file;
    if (!file.OpenUserDataFile(keOpenRead)) {
        file.CloseFailed();
        return false;
    }
    std::fstream& stream = *file.GetStream();
    for (RBString* text : {&userName, &password, &ipAddress, &dialupName})
        if (stream.good())
            stream >> *text;
    const int read = stream.good();
    file.Close();
    return read;
}
