#pragma once

// The product's numeric open modes; the values of one open add up.
//
// A file that is opened to be read alone can be renamed and removed meanwhile, and is read to its
// end all the same; one that is opened to be written keeps its name until it is closed.
enum {
    keOpenIn = 0x01,        // without out: the file must exist
    keOpenOut = 0x02,       // without in, ate and app: created, or cut to nothing
    keOpenAte = 0x04,       // at the end after opening
    keOpenApp = 0x08,       // every write at the end
    keOpenTrunc = 0x10,     // created, or cut to nothing
    keOpenNoCreate = 0x20,  // the file must exist
    keOpenNoReplace = 0x40, // the file must not exist
    keOpenBinary = 0x80,    // no translation of line ends

    // The sums that the library opens with.
    keOpenRead = keOpenIn | keOpenNoCreate | keOpenBinary,               // 0xA1
    keOpenUpdate = keOpenIn | keOpenOut | keOpenNoCreate | keOpenBinary, // 0xA3
    keOpenAppend = keOpenUpdate | keOpenAte,                             // 0xA7
    keOpenWrite = keOpenOut | keOpenBinary,                              // 0x82
    keOpenRewrite = keOpenWrite | keOpenTrunc                            // 0x92
};

// The stream library's default protection.
enum { keOpenProtection = 0 };
