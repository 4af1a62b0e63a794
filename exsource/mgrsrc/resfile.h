// What the commands that write resource files share: file names made into the library's
// paths, statuses in words, and a file opened for one edit that either writes it back whole
// or leaves it as it was.
#pragma once

#include <string>

#include "mg/resource.h"

// A status for a message: its meaning, name and number.
std::string StatusWords(MgStatus status);
// Why `name` can't be read, in words, e.g. "no such file or directory".
std::string WhyUnreadable(const std::string& name);
// The whole of a plain file; false, with the reason in `why`, when it can't be read.
bool ReadWholeFile(const std::string& name, std::string* bytes, std::string* why);

// A library Path of a file name from the command line, made absolute; released with the object.
struct LibraryPath {
    Path path = nullptr;
    MgStatus status = MgNoError;
    explicit LibraryPath(const std::string& name);
    ~LibraryPath();
    LibraryPath(const LibraryPath&) = delete;
    LibraryPath& operator=(const LibraryPath&) = delete;
};

// A resource file opened read-write through the library for an edit. Nothing reaches the disk
// until Commit, whose write-back puts a new file in the old one's place; a file that isn't
// committed is closed with its changes dropped.
class EditedFile {
  public:
    // Opens `name`: one that verify calls unsound is refused as list refuses it. False, with a
    // message for `command` on standard error, when it can't be opened.
    bool Open(const std::string& command, const std::string& name);
    // Opens `name` as it is, with no check and no message.
    MgStatus OpenAs(const std::string& name);
    ResFile id() const { return id_; }
    // Writes the changes back and closes (RCloseFile). Commit says why it couldn't.
    MgStatus Close();
    bool Commit(const std::string& command);
    ~EditedFile();

  private:
    ResFile id_ = 0;
    std::string name_;
};
