#include "platform/VoiceChannel.h"

#include "tests/support/Waiting.h"

#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QLocalServer>
#include <QLocalSocket>

TEST(VoiceChannelTest, AMessageReachesAListenerAndNobodyIsWaitedFor) {
    const QString title = QStringLiteral("KTL_SONDREL");
    QLocalServer::removeServer(title);
    QElapsedTimer timer;
    timer.start();
    voice::PostToVoice(2, 0);
    EXPECT_LT(timer.elapsed(), 500) << "without a listener";

    QLocalServer voiceProgram;
    ASSERT_TRUE(voiceProgram.listen(title)) << qPrintable(voiceProgram.errorString());
    voice::PostToVoice(2, -70'000);
    ASSERT_TRUE(WaitUntil([&] { return voiceProgram.hasPendingConnections(); }));
    QLocalSocket* connection = voiceProgram.nextPendingConnection();
    QByteArray message = connection->readAll();
    ASSERT_TRUE(WaitUntil([&] { return (message += connection->readAll()).endsWith('\n'); }));
    EXPECT_EQ(message, "KTL_ORVEX_TO_SONDREL 2 -70000\n");

    // A listener that does not take its connections must not hold up the exit.
    timer.start();
    for (int i = 0; i < 100; ++i)
        voice::PostToVoice(2, 0);
    EXPECT_LT(timer.elapsed(), 1000);
}
