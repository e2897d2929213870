#include "bench/line_bench/Shaper.h"

#include <gtest/gtest.h>

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/read.hpp>
#include <boost/asio/write.hpp>
#include <string>
#include <vector>

namespace {

using boost::asio::ip::tcp;
using linebench::Line;
using linebench::Shaper;

/// A service that listens, and a client that comes to it through a shaper.
class ShaperTest : public testing::TestWithParam<Line> {
protected:
    void Connect() {
        auto const address = shaper.Address();
        auto const port = std::stoul(address.substr(address.rfind(':') + 1));
        client.connect({boost::asio::ip::address_v4::loopback(), static_cast<std::uint16_t>(port)});
    }

    /// What comes until the other side closes the connection.
    static std::string ReadAll(tcp::socket& socket) {
        std::string text;
        boost::system::error_code end;
        boost::asio::read(socket, boost::asio::dynamic_buffer(text), end);
        return text;
    }

    boost::asio::io_context context;
    tcp::acceptor service{context, {boost::asio::ip::address_v4::loopback(), 0}};
    Shaper shaper{"http://127.0.0.1:" + std::to_string(service.local_endpoint().port()),
                  GetParam()};
    tcp::socket client{context};
};

std::string Numbers(std::size_t count) {
    std::string text;
    for (std::size_t i = 0; i < count; ++i)
        text += std::to_string(i) + ' ';
    return text;
}

TEST_P(ShaperTest, BytesArriveInOrderAndTheEndAfterThem) {
    auto const upload = Numbers(20'000);
    auto const answer = Numbers(100);
    Connect();
    auto atService = service.accept();
    boost::asio::write(client, boost::asio::buffer(upload));
    std::string arrived(upload.size(), ' ');
    boost::asio::read(atService, boost::asio::buffer(arrived));
    EXPECT_TRUE(arrived == upload);

    boost::asio::write(atService, boost::asio::buffer(answer));
    atService.close();
    EXPECT_EQ(ReadAll(client), answer);
}

TEST_P(ShaperTest, AClientThatLeavesIsGoneForTheService) {
    Connect();
    auto atService = service.accept();
    boost::asio::write(client, boost::asio::buffer("half", 4));
    client.close();
    EXPECT_EQ(ReadAll(atService), "half");
}

TEST_P(ShaperTest, WithoutAServiceTheConnectionIsClosed) {
    service.close();
    Connect();
    EXPECT_EQ(ReadAll(client), "");
}

INSTANTIATE_TEST_SUITE_P(Lines, ShaperTest,
                         testing::Values(Line{},
                                         Line{.bytesPerSecond = 10'000'000,
                                              .oneWay = std::chrono::milliseconds(5)},
                                         Line{.connectionBytesPerSecond = 10'000'000,
                                              .stallsPerMib = 1,
                                              .stall = std::chrono::milliseconds(1)}));

}  // namespace
