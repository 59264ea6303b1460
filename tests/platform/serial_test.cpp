#include <fcntl.h>
#include <gtest/gtest.h>
#include <pty.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <stdexcept>
#include <string>
#include <utility>

#include "platform/serial_parameters.h"
#include "platform/serial_writer.h"

namespace platform {
namespace {

TEST(SerialParametersTest, ReadsTheDeviceControlText) {
  const auto parameters = parseSerialParameters("baud=9600 PARITY=N data=8 stop=1");
  ASSERT_TRUE(parameters);
  EXPECT_EQ(parameters->baud, 9600);
  EXPECT_EQ(parameters->parity, Parity::None);
  EXPECT_EQ(parameters->dataBits, 8);
  EXPECT_EQ(parameters->stopBits, StopBits::One);
  EXPECT_FALSE(parameters->xonXoff);
}

TEST(SerialParametersTest, AcceptsOnlyAWholeTextThatItUnderstands) {
  const std::pair<const char*, bool> cases[] = {
      {"", true},
      {"baud=96", true},
      {"  baud=19200   to=off  ", true},
      {"parity=m data=7 stop=2 xon=on odsr=off octs=on dtr=hs rts=tg idsr=on", true},
      {"data=5 stop=1.5", true},
      {"data=8 stop=1.5", false},
      {"baud=9601", false},
      {"baud=9600x", false},
      {"baud=", false},
      {"baud", false},
      {"baud = 9600", false},
      {"parity=q", false},
      {"data=9", false},
      {"dtr=tg", false},
      {"baud=9600 colour=red", false},
      {"baud=99999999999999999999", false},
  };
  for (const auto& [text, accepted] : cases) EXPECT_EQ(parseSerialParameters(text).has_value(), accepted) << text;
}

// A pseudo-terminal: the port's end is the device, the other one what the device's owner would read.
class SerialLine {
 public:
  SerialLine() {
    std::array<char, 256> name{};
    int device = -1;
    if (openpty(&reader_, &device, name.data(), nullptr, nullptr) != 0) throw std::runtime_error("openpty");
    device_ = name.data();
    keeper_ = device;
    fcntl(reader_, F_SETFL, O_NONBLOCK);
  }
  ~SerialLine() {
    close(reader_);
    close(keeper_);
  }
  SerialPort port(const char* parameters = "baud=19200 parity=N data=8 stop=1") {
    auto port = SerialPort::open(device_);
    EXPECT_TRUE(port && port->apply(*parseSerialParameters(parameters)));
    return std::move(*port);
  }
  std::string read(std::size_t size) {
    std::string text;
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (text.size() < size && std::chrono::steady_clock::now() < end) {
      std::array<char, 4096> chunk{};
      const ssize_t got = ::read(reader_, chunk.data(), chunk.size());
      if (got > 0) {
        text.append(chunk.data(), static_cast<std::size_t>(got));
      } else {
        usleep(2000);
      }
    }
    return text;
  }
  const std::string& device() const { return device_; }

 private:
  int reader_ = -1;
  int keeper_ = -1;
  std::string device_;
};

TEST(SerialPortTest, SetsTheLineAndItsWriteTimeOut) {
  const std::pair<const char*, int> cases[] = {
      {"baud=19200 parity=N data=8 stop=1", 1}, {"baud=9600", 2}, {"baud=110", 174}, {"baud=115200", 0}};
  for (const auto& [parameters, multiplier] : cases) {
    SerialLine line;
    EXPECT_EQ(line.port(parameters).writeTotalMultiplier(), multiplier) << parameters;
  }
}

TEST(SerialPortTest, IsNoPortWithoutASerialDevice) {
  EXPECT_FALSE(SerialPort::open("/dev/null"));
  EXPECT_FALSE(SerialPort::open("/nowhere/ttyS0"));
}

TEST(SerialWriterTest, LinesArriveCompleteAndInOrder) {
  SerialLine line;
  std::string expected;
  SerialWriter writer(line.port());
  for (int i = 0; i < 200; ++i) {
    const std::string text = "call " + std::to_string(i) + " of the day, a line of some length\r\n";
    ASSERT_TRUE(writer.queue(text));
    expected += text;
  }
  EXPECT_EQ(line.read(expected.size()), expected);
}

TEST(SerialWriterTest, TakesWhatFillsTheQueueExactlyAndNotAByteMore) {
  SerialLine line;
  SerialWriter writer(line.port());
  // All within the writer's first wait: nothing is drained in between.
  EXPECT_TRUE(writer.queue(std::string(SerialWriter::kQueueSize - 10, 'a')));
  EXPECT_FALSE(writer.queue(std::string(11, 'b')));
  EXPECT_TRUE(writer.queue(std::string(10, 'c')));
  EXPECT_FALSE(writer.queue("d"));
  EXPECT_TRUE(writer.queue(""));
}

TEST(SerialWriterTest, WhatWasQueuedIsSentBeforeTheEnd) {
  SerialLine line;
  {
    SerialWriter writer(line.port());
    ASSERT_TRUE(writer.queue("the last call of the day\r\n"));
    EXPECT_TRUE(writer.drain(std::chrono::seconds(5)));
  }
  EXPECT_EQ(line.read(26), "the last call of the day\r\n");
  SerialWriter stuck(line.port("baud=110"));
  while (stuck.queue(std::string(1000, 'x'))) {
  }
  EXPECT_FALSE(stuck.drain(std::chrono::milliseconds(300)));
}

TEST(SerialWriterTest, AReaderThatStoppedDoesNotHoldUpTheClose) {
  SerialLine line;
  const auto begin = std::chrono::steady_clock::now();
  {
    SerialWriter writer(line.port("baud=110"));
    while (writer.queue(std::string(1000, 'x'))) {
    }
    usleep(250 * 1000);
  }
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(2));
}

}  // namespace
}  // namespace platform
