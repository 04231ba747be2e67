#include "tools/kelscore/Files.h"

#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

#include "tools/kelscore/Failure.h"

namespace kelscore {
namespace {

[[noreturn]] void Fail(const std::string& name, const std::string& what, int error) {
  throw Failure(kInputOutputFailed, name + ": " + what + ": " + std::generic_category().message(error));
}

int OpenForReading(const std::string& path) {
  if (path == kStandardStream) return STDIN_FILENO;
  const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (descriptor < 0) Fail(path, "can't be opened", errno);
  return descriptor;
}

int OpenForWriting(const std::string& path) {
  if (path == kStandardStream) return STDOUT_FILENO;
  const int descriptor = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
  if (descriptor < 0) Fail(path, "can't be opened for writing", errno);
  return descriptor;
}

}  // namespace

InputFile::InputFile(const std::string& path)
    : fName(path == kStandardStream ? "standard input" : path), fDescriptor(OpenForReading(path)) {
  struct stat facts {};
  if (::fstat(fDescriptor, &facts) == 0 && S_ISDIR(facts.st_mode)) {
    if (path != kStandardStream) ::close(fDescriptor);
    Fail(fName, "can't be read", EISDIR);
  }
}

InputFile::~InputFile() {
  if (fDescriptor != STDIN_FILENO) ::close(fDescriptor);
}

std::size_t InputFile::Read(char* buffer, std::size_t size) {
  for (;;) {
    const ssize_t count = ::read(fDescriptor, buffer, size);
    if (count >= 0) return static_cast<std::size_t>(count);
    if (errno != EINTR) Fail(fName, "can't be read", errno);
  }
}

bool InputFile::IsSameFile(const std::string& path) const {
  struct stat mine {};
  struct stat other {};
  return ::fstat(fDescriptor, &mine) == 0 && ::stat(path.c_str(), &other) == 0 && S_ISREG(mine.st_mode) &&
         mine.st_dev == other.st_dev && mine.st_ino == other.st_ino;
}

OutputFile::OutputFile(const std::string& path)
    : fName(path == kStandardStream ? "standard output" : path),
      fDescriptor(OpenForWriting(path)),
      fOwned(path != kStandardStream) {}

OutputFile::~OutputFile() {
  if (fOwned && fDescriptor >= 0) ::close(fDescriptor);
}

void OutputFile::Write(std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t count = ::write(fDescriptor, bytes.data(), bytes.size());
    if (count >= 0) {
      bytes.remove_prefix(static_cast<std::size_t>(count));
    } else if (errno == EPIPE) {
      throw Failure(kInputOutputFailed, "");
    } else if (errno != EINTR) {
      Fail(fName, "can't be written, what it holds is incomplete", errno);
    }
  }
}

void OutputFile::Close() {
  if (!fOwned) return;
  const int descriptor = fDescriptor;
  fDescriptor = -1;
  if (::close(descriptor) != 0) Fail(fName, "can't be written, what it holds is incomplete", errno);
}

bool IsSameFile(const std::string& first, const std::string& second) {
  std::error_code ignored;
  return std::filesystem::equivalent(first, second, ignored);
}

}  // namespace kelscore
