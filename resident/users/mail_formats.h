#pragma once

// How mail to a user is formatted. The numbers are those of the user records; a user's platform
// follows from its message format and enclosure encoding (BaseMailUser::SetPlatformFromEncoding).
// Programs may set other values.

enum enumMessageFormat : int { keFormat1 = 1, keFormat2 = 2, keFormat3 = 3, keFormat4 = 4 };

// How enclosures are encoded.
enum enumEnclosureEncode : int { keEncode1 = 1, keEncode2 = 2, keEncode7 = 7 };

// What the user reads mail with.
enum enumUserPlatformType : int {
    kePlatform1 = 1,
    kePlatform2 = 2,
    kePlatform3 = 3,
    kePlatform4 = 4,
    kePlatform5 = 5,
    kePlatform6 = 6
};
