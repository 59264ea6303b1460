#include "ingest/output_port.h"

#include <gtest/gtest.h>
#include <pty.h>
#include <unistd.h>

#include <array>
#include <fstream>
#include <iterator>

#include "support/exchange.h"

namespace ingest {
namespace {

class OutputPortTest : public ::testing::Test {
 protected:
  void set(const char* key, const std::string& text) { copy.machine.writeString("general", key, text); }
  std::string outFile() {
    std::ifstream file(files.folder / "out.txt", std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  }

  support::ExchangeFiles files;
  support::RunningCopy copy{files};
};

TEST_F(OutputPortTest, WithoutSettingsItIsClosed) {
  EXPECT_FALSE(copy.output.isOpen());
  EXPECT_EQ(copy.output.SendLine("x"), 1);
}

TEST_F(OutputPortTest, TheFileTakesOutgoingCallsOnly) {
  set("OutFile", (files.folder / "out.txt").string());
  copy.config.WriteConfigString("19", "OrganizationTAXE", "general", foundation::StoreDatabase);
  copy.output.Open();
  exchange::CallRecord incoming = support::sampleCall();
  incoming.incoming = 1;
  copy.recorder.AddRecord(incoming);
  exchange::CallRecord outgoing = support::sampleCall();
  copy.recorder.AddRecord(outgoing);
  EXPECT_EQ(outFile(), forwardingLine(support::sampleCall(), 0.2, "RON", 1, 19));
  std::filesystem::remove(files.folder / "out.txt");
  copy.recorder.AddRecord(outgoing);
  EXPECT_NE(outFile(), "");
}

TEST_F(OutputPortTest, LinesAreInTheCodePageOfTheRecords) {
  set("OutFile", (files.folder / "out.txt").string());
  copy.output.Open();
  exchange::CallRecord call = support::sampleCall("345\u00e9");
  copy.recorder.AddRecord(call);
  const std::string line = outFile();
  EXPECT_EQ(line.substr(0, 31), "345\xe9                           ");
  EXPECT_EQ(line.size(), forwardingLine(support::sampleCall(), 0, "RON", 0, 0).size());
}

TEST_F(OutputPortTest, AFileThatCannotBeWrittenStopsNoCall) {
  for (const std::string& file : {(files.folder / "no" / "out.txt").string(), std::string("/dev/full")}) {
    set("OutFile", file);
    copy.output.Open();
    exchange::CallRecord call = support::sampleCall();
    EXPECT_EQ(copy.recorder.AddRecord(call), Recording::Recorded) << file;
  }
  EXPECT_EQ(copy.callCount(), 2);
}

TEST_F(OutputPortTest, ThePortTakesLinesAndRefusesBadParameters) {
  int reader = -1;
  int device = -1;
  std::array<char, 256> name{};
  ASSERT_EQ(openpty(&reader, &device, name.data(), nullptr, nullptr), 0);
  set("Device_COM2", name.data());

  set("COMOut", "COM2: baud=9600 colour=red");
  copy.output.Open();
  EXPECT_FALSE(copy.output.isOpen());
  EXPECT_EQ(copy.logged(), "9 Invalid DCB: COM2: baud=9600 colour=red\n");

  close(reader);
  close(device);
  ASSERT_EQ(openpty(&reader, &device, name.data(), nullptr, nullptr), 0);
  set("Device_COM2", name.data());
  set("COMOut", "COM2: baud=19200 parity=N data=8 stop=1");
  copy.output.Open();
  ASSERT_TRUE(copy.output.isOpen());
  EXPECT_EQ(copy.output.SendLine("one\r\n"), 1);
  EXPECT_EQ(copy.output.SendLine("two\r\n"), 1);
  EXPECT_EQ(copy.output.SendLine(std::string(16384, 'x')), 0);
  std::string got;
  while (got.size() < 10) {
    std::array<char, 64> chunk{};
    const ssize_t size = read(reader, chunk.data(), chunk.size());
    ASSERT_GT(size, 0);
    got.append(chunk.data(), static_cast<std::size_t>(size));
  }
  EXPECT_EQ(got, "one\r\ntwo\r\n");
  copy.output.Close();
  EXPECT_FALSE(copy.output.isOpen());
  close(reader);
  close(device);
}

TEST_F(OutputPortTest, AMissingPortIsLogged) {
  set("Device_COM3", "/nowhere/tty");
  set("COMOut", "COM3: baud=9600");
  copy.output.Open();
  EXPECT_FALSE(copy.output.isOpen());
  EXPECT_EQ(copy.logged(), "9 Can't open ComOut: COM3\n");
}

}  // namespace
}  // namespace ingest
