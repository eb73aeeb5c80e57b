// The worker side of the long-operation protocol, read back byte by byte from real pipes, and
// the parent's reader of the same stream.
#include "llib/gen/processasexe.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <unistd.h>

#include <chrono>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "llib/gen/processworker.h"

namespace {

using Clock = std::chrono::steady_clock;

long long MsSince(Clock::time_point start) {
  return std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start).count();
}

// A pipe pair closed on destruction.
struct Pipe {
  int read = -1, write = -1;
  Pipe() {
    int fds[2];
    if (::pipe2(fds, O_CLOEXEC) == 0) read = fds[0], write = fds[1];
  }
  ~Pipe() {
    if (read >= 0) ::close(read);
    if (write >= 0) ::close(write);
  }
  // Everything written so far (the write end stays open).
  std::string Drain() const {
    std::string bytes;
    char buffer[65536];
    for (;;) {
      pollfd fd{read, POLLIN, 0};
      if (::poll(&fd, 1, 0) <= 0) return bytes;
      ssize_t n = ::read(read, buffer, sizeof buffer);
      if (n <= 0) return bytes;
      bytes.append(buffer, static_cast<std::size_t>(n));
    }
  }
};

// A worker interface writing to one pipe and watching another.
struct WorkerEnds {
  Pipe output;  // worker -> parent: messages
  Pipe stop;    // parent -> worker: the stop request
  LProcessAsExeInterface process{output.write, stop.read};
  void AskToStop() const { ASSERT_EQ(::write(stop.write, "x", 1), 1); }
};

// The messages of a stream with their codes, keep-alives left out.
std::vector<unsigned char> CodesWithoutKeepAlives(const std::string& bytes) {
  std::vector<unsigned char> codes;
  std::size_t at = 0;
  while (at < bytes.size()) {
    auto code = static_cast<unsigned char>(bytes[at]);
    if (code != kProcessMessageKeepAlive) codes.push_back(code);
    if (code == kProcessMessageProgress) at += 9;
    else if (code >= kProcessMessageError) at += 3 + (static_cast<unsigned char>(bytes[at + 1]) |
                                                      static_cast<unsigned char>(bytes[at + 2]) << 8);
    else if (code <= kProcessMessageCancelled) break;  // a result runs to the end
    else at += 1;
  }
  return codes;
}

// Records what a reader replays.
class Recorder : public LProcessInterfaceVoid {
 public:
  void SetError(std::string_view text) override { events.push_back("error:" + std::string(text)); }
  void SetStatus(std::string_view text, int line) override {
    events.push_back("status" + std::to_string(line) + ":" + std::string(text));
  }
  void SetProgress(double fraction) override { events.push_back("progress:" + std::to_string(fraction)); }
  void SetProgressIndeterminateOn() override { events.push_back("on"); }
  void SetProgressIndeterminateOff() override { events.push_back("off"); }
  void SetResultCode(LProcessResult result, const void* data, unsigned long size) override {
    events.push_back("result" + std::to_string(result) + ":" + std::string(static_cast<const char*>(data), size));
  }
  std::vector<std::string> events;
};

}  // namespace

TEST(ProcessAsExe, EachMessageHasItsBytes) {
  WorkerEnds ends;
  ends.process.SetProgressIndeterminateOn();
  ends.process.SetProgressIndeterminateOff();
  ends.process.SetProgress(0.5);
  ends.process.SetError("é");
  ends.process.SetStatus("abc", 2);
  ends.process.SetStatus("ignored", 3);
  ends.process.SetStatus("ignored", -1);
  ends.process.SetResultCode(kProcessFinished, "DATA", 4);
  ends.process.SetError("after the result: never sent");

  double half = 0.5;
  unsigned char halfBytes[8];
  std::memcpy(halfBytes, &half, 8);  // the machine's order, little-endian here
  std::string expected = "\x11\x12\x10";
  expected.append(reinterpret_cast<const char*>(halfBytes), 8);
  expected += std::string("\x80\x02\x00", 3) + "é";
  expected += std::string("\x83\x03\x00", 3) + "abc";
  expected += "\x01" "DATA";
  EXPECT_EQ(ends.output.Drain(), expected);
}

TEST(ProcessAsExe, CancelledSendsNoDataAndFailedSendsIt) {
  WorkerEnds cancelled, failed;
  cancelled.process.SetResultCode(kProcessCancelled, "ignored", 7);
  failed.process.SetResultCode(kProcessFailed, "why", 3);
  EXPECT_EQ(cancelled.output.Drain(), "\x02");
  EXPECT_EQ(failed.output.Drain(), std::string("\x00why", 4));
}

TEST(ProcessAsExe, TextOf70000BytesIsCutTo65535WithThatLength) {
  WorkerEnds ends;
  std::string big(70000, 'a');
  std::thread sender([&] { ends.process.SetStatus(big, 0); });  // larger than a pipe's buffer
  std::string bytes;
  while (bytes.size() < 3 + 65535) {
    std::string more = ends.output.Drain();
    if (more.empty()) std::this_thread::sleep_for(std::chrono::milliseconds(5));
    bytes += more;
  }
  sender.join();
  bytes += ends.output.Drain();
  ASSERT_EQ(bytes.size(), 3u + 65535u);
  EXPECT_EQ(static_cast<unsigned char>(bytes[0]), 0x81);
  EXPECT_EQ(static_cast<unsigned char>(bytes[1]), 0xFF);
  EXPECT_EQ(static_cast<unsigned char>(bytes[2]), 0xFF);
  EXPECT_EQ(bytes.substr(3), std::string(65535, 'a'));
}

TEST(ProcessAsExe, ProgressEvery10msGivesAboutFourAMessagesSecondAndAlwaysTheFinalOne) {
  WorkerEnds ends;
  Clock::time_point start = Clock::now();
  int steps = 0;
  while (MsSince(start) < 1000) {
    ends.process.SetProgress(0.0005 * ++steps);
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  ends.process.SetProgress(1.0);
  ends.process.SetProgress(1.0);  // 1.0 goes out even right after another
  std::vector<unsigned char> codes = CodesWithoutKeepAlives(ends.output.Drain());
  ASSERT_GE(codes.size(), 5u);
  for (unsigned char code : codes) EXPECT_EQ(code, kProcessMessageProgress);
  // The first at once, then one per 250 ms during one second, then the two final ones.
  EXPECT_GE(codes.size(), 2u + 4u);
  EXPECT_LE(codes.size(), 2u + 5u);
  EXPECT_GT(steps, 50);  // the loop did call far more often than it sent
}

TEST(ProcessAsExe, StopRequestIsSeenWithoutBeingConsumedAndSoIsTheParentsEnd) {
  WorkerEnds ends;
  EXPECT_FALSE(ends.process.IsToStop());
  ends.AskToStop();
  EXPECT_TRUE(ends.process.IsToStop());
  EXPECT_TRUE(ends.process.IsToStop());  // still there: the byte was not read
  char byte = 0;
  EXPECT_EQ(::read(ends.stop.read, &byte, 1), 1);
  EXPECT_EQ(byte, 'x');
  // A parent gone (the end of its stop pipe) stops the worker too.
  EXPECT_FALSE(ends.process.IsToStop());
  ::close(ends.stop.write);
  ends.stop.write = -1;
  EXPECT_TRUE(ends.process.IsToStop());
}

TEST(ProcessAsExe, KeepAliveAtMostOncePerSecond) {
  WorkerEnds ends;
  Clock::time_point start = Clock::now();
  while (MsSince(start) < 1500) ends.process.IsToStop();
  std::string bytes = ends.output.Drain();
  EXPECT_EQ(bytes, std::string(2, static_cast<char>(kProcessMessageKeepAlive)));  // at 0 and at 1,000 ms
}

TEST(ProcessAsExe, WaitWithAStopAfter400msReturnsTrueWithin600ms) {
  WorkerEnds ends;
  std::thread parent([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(400));
    ends.AskToStop();
  });
  Clock::time_point start = Clock::now();
  bool stopped = ends.process.ProcessWait(1000);
  long long elapsed = MsSince(start);
  parent.join();
  EXPECT_TRUE(stopped);
  EXPECT_GE(elapsed, 390);
  EXPECT_LE(elapsed, 600);
}

TEST(ProcessAsExe, WaitWithoutStopRunsItsTimeAndAStoppedWaitReturnsAtOnce) {
  WorkerEnds ends;
  Clock::time_point start = Clock::now();
  EXPECT_FALSE(ends.process.ProcessWait(700));  // more than two slices of 300 ms
  EXPECT_GE(MsSince(start), 695);
  EXPECT_LE(MsSince(start), 900);
  ends.AskToStop();
  start = Clock::now();
  EXPECT_TRUE(ends.process.ProcessWaitUntilStopped());
  EXPECT_LE(MsSince(start), 50);
}

TEST(ProcessMessageReader, ReplaysEveryMessageWhateverThePieces) {
  WorkerEnds ends;
  ends.process.SetProgressIndeterminateOn();
  ends.process.SetStatus("Customers", 0);
  ends.process.SetProgressIndeterminateOff();
  ends.process.SetProgress(0.25);
  ends.process.IsToStop();
  ends.process.SetStatus("line one", 1);
  ends.process.SetError("Impossible de copier");
  ends.process.SetResultCode(kProcessFailed, "tail\x01\x02", 6);
  std::string bytes = ends.output.Drain();

  for (std::size_t piece : {std::size_t{1}, std::size_t{2}, std::size_t{7}, bytes.size()}) {
    Recorder target;
    LProcessMessageReader reader(target);
    for (std::size_t at = 0; at < bytes.size(); at += piece)
      reader.Feed(bytes.data() + at, std::min(piece, bytes.size() - at));
    ASSERT_TRUE(reader.Finish()) << piece;
    EXPECT_EQ(target.events, (std::vector<std::string>{"on", "status0:Customers", "off", "progress:0.250000",
                                                       "status1:line one", "error:Impossible de copier",
                                                       "result2:tail\x01\x02"}))
        << "pieces of " << piece;
    EXPECT_EQ(reader.GetKeepAliveCount(), 1);
  }
}

TEST(ProcessMessageReader, StreamWithoutResultOrWithAStrayByteIsNoResult) {
  Recorder target;
  LProcessMessageReader cut(target);
  cut.Feed("\x10\x00\x00", 3);  // a progress message cut short
  EXPECT_FALSE(cut.Finish());
  LProcessMessageReader stray(target);
  stray.Feed("\x42\x01", 2);
  EXPECT_FALSE(stray.Finish());
  EXPECT_TRUE(target.events.empty());
}
