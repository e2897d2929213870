// Our uploads against a tus server that others have written: the wire is the protocol's, not what
// our client and our service have agreed on. It joins no parts, so the upload goes in one stream.
// Run by stock_tus_server/serve.mjs, which cuts the connection once.

#include <gtest/gtest.h>

#include <random>
#include <string>

#include "moxcore/config/Error.h"
#include "quillosdk/QuilloClient.h"
#include "quillosdk/RetryPolicy.h"
#include "tests/support/TemporaryDirectory.h"

namespace quillosdk {
namespace {

constexpr std::size_t kBytes = std::size_t{30} << 20;  // goes in parts where the server joins them

TEST(StockTusServer, TakesAnUploadWholeThoughItsConnectionIsCut) {
    RetryPolicy::SetRandomSource([] { return 0.0; });
    testsupport::TemporaryDirectory directory;
    std::independent_bits_engine<std::minstd_rand, 8, unsigned> random;
    std::string content(kBytes, '\0');
    for (auto& byte : content)
        byte = static_cast<char>(random());
    directory.Write("Schnitt – final.mp4", content);

    QuilloClient client(QuilloConfig("test"), {});
    ASSERT_TRUE(client.UpdateAccessToken("token-of-the-test").IsSuccess());
    std::uint64_t told = 0;
    UploadRequest const request(quillocommon::Guid::CreateUnique(),
                                (directory.Path() / "Schnitt – final.mp4").string(),
                                [&](std::uint64_t done, std::uint64_t total) {
                                    EXPECT_EQ(total, kBytes);
                                    told = done;
                                });
    quillocommon::Guid uploadID;
    auto const upload = client.GetTransferManager().Upload(request, uploadID);
    upload.Wait();
    ASSERT_FALSE(upload.GetException())
        << moxcore::config::ExtractMessageFromException(upload.GetException());
    // Successful only when the server stored the bytes that were read.
    EXPECT_EQ(upload.Get()->GetHTTPStatusCode(), 200);
    EXPECT_EQ(upload.Get()->GetAssetObject().name, "Schnitt – final.mp4");
    EXPECT_EQ(told, kBytes);
    RetryPolicy::SetRandomSource({});
}

}  // namespace
}  // namespace quillosdk
