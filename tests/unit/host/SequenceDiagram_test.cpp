#include "host/trace/SequenceDiagram.h"

#include "tests/support/TraceFile.h"

#include <algorithm>
#include <gtest/gtest.h>

using host::SequenceDiagram;
using Problems = std::vector<std::string>;

TEST(SequenceDiagram, AnEmptyOneIsADiagram)
{
    EXPECT_EQ(SequenceDiagram().Text(), "sequenceDiagram\n");
}

TEST(SequenceDiagram, PartiesStandInTheOrderOfTheirAppearance)
{
    SequenceDiagram diagram;
    diagram.Message("Host", "Module of pc", "Login(user=1)");
    diagram.Answer("Module of pc", "Host", "true");
    EXPECT_EQ(diagram.Text(), "sequenceDiagram\n"
                              "    participant P1 as Host\n"
                              "    participant P2 as Module of pc\n"
                              "    P1->>P2: Login(user=1)\n"
                              "    P2-->>P1: true\n");
    EXPECT_EQ(DiagramProblems(diagram.Text()), Problems{});
}

TEST(SequenceDiagram, WhatMeansSomethingToMermaidIsEscaped)
{
    SequenceDiagram diagram;
    diagram.Message("Host", "Module", "a;b#c\nd");
    EXPECT_NE(diagram.Text().find("P1->>P2: a#59;b#35;c\\x0Ad\n"), std::string::npos) << diagram.Text();
    EXPECT_EQ(DiagramProblems(diagram.Text()), Problems{});
}

TEST(SequenceDiagram, ALongMessageIsCutBetweenCharacters)
{
    SequenceDiagram diagram;
    std::string text;
    while (text.size() < 200)
    {
        text += "\u20ac";
    }
    diagram.Message("Host", "Module", text);
    EXPECT_NE(diagram.Text().find("\u20ac...\n"), std::string::npos) << diagram.Text();
    EXPECT_LT(diagram.Text().size(), 220u);
}

TEST(SequenceDiagram, AFullOneIsCutAndSaysSo)
{
    SequenceDiagram diagram;
    for (int i = 0; i < 10'000; ++i)
    {
        diagram.Message("Host", "Module", "Login(user=" + std::to_string(i) + ")");
    }
    const std::string text = diagram.Text();
    EXPECT_LE(text.size(), SequenceDiagram::kLargestText);
    EXPECT_EQ(DiagramProblems(text), Problems{});
    const size_t shown = static_cast<size_t>(std::count(text.begin(), text.end(), '\n')) - 4;
    EXPECT_NE(text.find("The diagram is cut here. " + std::to_string(10'000 - shown) + " further messages"),
              std::string::npos);
}

TEST(SequenceDiagram, ManyPartiesAndRepetitionsStayWithinTheLimit)
{
    SequenceDiagram diagram;
    for (int i = 0; i < 1000; ++i)
    {
        const std::string name = std::to_string(i);
        diagram.Message("Host", "Module of " + name, "Login");
        diagram.Repetition("operation " + name);
    }
    const std::string text = diagram.Text();
    EXPECT_LE(text.size(), SequenceDiagram::kLargestText);
    EXPECT_EQ(DiagramProblems(text), Problems{});
    EXPECT_NE(text.find("Left out as repetitions - 1 x operation 0\n"), std::string::npos);
    EXPECT_NE(text.find("Further repetitions are in the trace only."), std::string::npos);
}
