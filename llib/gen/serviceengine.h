// The service engine: the long-running process that hosts the background services (the web
// server, the background e-mail sender). It runs in the foreground of `kontavo serve` until
// SIGINT or SIGTERM, and takes controls from other processes over the Unix socket "kontavod" of
// the application folder: a desk command that changes the web server's settings connects and
// sends the restart control, and the engine answers once the restart is done.
//
// Control framing on the socket: the client sends the code (4-byte signed integer) and the size
// of its data (4-byte unsigned), both in the machine's byte order, then the data; the engine
// answers one byte, 1 when the code was handled and 0 otherwise, and closes. One control is
// handled at a time, on the engine's own thread, between Start and Stop.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

inline constexpr int kServiceControlRestart = 1;
inline constexpr int kServiceControlWebOff = 2;  // until the next restart (a restore runs)
inline constexpr int kServiceControlWebListening = 3;  // handled when the web server accepts connections
inline constexpr int kServiceControlWebPortTaken = 4;  // handled when another program holds its port
inline constexpr int kServiceControlStop = 5;          // the engine ends as on SIGTERM
inline constexpr unsigned kServiceControlReadMs = 5000;      // a client's request must arrive by then
inline constexpr unsigned kServiceControlAnswerMs = 120000;  // a restart waits for connections

class LServiceEngine {
 public:
  virtual ~LServiceEngine() = default;

  // Starts the services; called once by RunForeground.
  virtual void Start() = 0;
  // Stops the services; called once when the engine ends.
  virtual void Stop() = 0;
  // A control from a client. The base handles kServiceControlStop (RequestStop) and nothing
  // else.
  virtual bool Control(int code, const void* data, std::size_t size);

  // Opens the control socket, calls Start, handles controls until SIGINT or SIGTERM arrives
  // (or RequestStop is called), then calls Stop and removes the socket. Returns false at once,
  // with a French message in error, when another engine already serves this application folder
  // or the socket cannot be made.
  bool RunForeground(std::string& error);
  // Makes RunForeground stop; safe from any thread.
  void RequestStop();

  // "<application folder>/kontavod".
  static std::string GetControlSocketPath();

 private:
  int stopPipe_[2] = {-1, -1};  // RequestStop writes here; [0] read end, [1] write end
};

// Sends a control to the engine of this application folder and waits for its answer. true when
// an engine runs and handled the code; false when none runs or it did not handle it.
bool LServiceEngineSendControl(int code, const void* data = nullptr, std::size_t size = 0);
// True when an engine answers on the control socket.
bool LServiceEngineIsRunning();
// Starts `program args...` as a service of its own: a new session (a closed terminal or Ctrl-C
// of the starter does not reach it), stdin from /dev/null, stdout and stderr appended to
// logPath. Does not wait for it. true with pid set when it was started; false with errno set
// otherwise.
[[nodiscard]] bool LServiceEngineLaunch(const std::string& program, const std::vector<std::string>& args,
                                        const std::string& logPath, int& pid);
