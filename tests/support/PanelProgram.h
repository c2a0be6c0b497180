// The built hxdpanel, run as a user or a script runs it, in /tmp.
#ifndef PANELPROGRAM_H
#define PANELPROGRAM_H

#include "common/QtProcess.h"

#include <gtest/gtest.h>

#include <QStringList>

#include <string>
#include <vector>

using Words = std::vector<std::string>;

struct Outcome {
    int exitCode;
    std::string out;
    std::string errors;
};

inline void Start(QProcess& process, const Words& arguments) {
    QStringList texts;
    for (const std::string& argument : arguments)
        texts << QString::fromUtf8(argument.c_str());
    process.setWorkingDirectory(QLatin1String("/tmp"));
    process.start(QString::fromUtf8(HXD_PANEL_PROGRAM), texts);
    ASSERT_TRUE(process.waitForStarted()) << HXD_PANEL_PROGRAM;
}

inline Outcome Finish(QProcess& process) {
    process.closeWriteChannel();
    EXPECT_TRUE(process.waitForFinished(60000));
    EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
    return {process.exitCode(), process.readAllStandardOutput().constData(),
            process.readAllStandardError().constData()};
}

inline Outcome Hxdpanel(const Words& arguments, const std::string& input = "") {
    QProcess process;
    Start(process, arguments);
    process.write(input.data(), static_cast<qint64>(input.size()));
    return Finish(process);
}

inline bool Contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

#endif
