#include "host/trace/SequenceDiagram.h"

#include "tests/support/TraceFile.h"

#include <algorithm>
#include <gtest/gtest.h>

using host::SequenceDiagram;
using Problems = std::vector<std::string>;

TEST(SequenceDiagram, AnEmptyOneIsADiagram)
{
    EXPECT_EQ(SequenceDiagram({}).Text(), "sequenceDiagram\n");
}

TEST(SequenceDiagram, ShowsMessagesAndNotesBetweenItsParties)
{
    SequenceDiagram diagram({{"Host"}, {"Module of pc", "user 1"}, {"Platform"}});
    EXPECT_TRUE(diagram.Note("a chapter"));
    EXPECT_TRUE(diagram.Message(0, 1, "Login(user 1)"));
    EXPECT_TRUE(diagram.Message(1, 2, "Login(user 1) = 0x80004005", SequenceDiagram::Arrow::Failed));
    EXPECT_TRUE(diagram.Note(1, "destroyed"));
    diagram.ClosingNote("the end");
    EXPECT_EQ(diagram.Text(), "sequenceDiagram\n"
                              "    participant P1 as Host\n"
                              "    participant P2 as Module of pc<br/>user 1\n"
                              "    participant P3 as Platform\n"
                              "    Note over P1,P3: a chapter\n"
                              "    P1->>P2: Login(user 1)\n"
                              "    P2-xP3: Login(user 1) = 0x80004005\n"
                              "    Note over P2: destroyed\n"
                              "    Note over P1,P3: the end\n");
    EXPECT_EQ(DiagramProblems(diagram.Text()), Problems{});
}

TEST(SequenceDiagram, CharactersWithAMeaningInMermaidAreEscaped)
{
    SequenceDiagram diagram({{"Host"}, {"Module of <pc>"}});
    diagram.Message(0, 1, "a;b#c\nd<br/>&");
    EXPECT_NE(diagram.Text().find("P2 as Module of #60;pc#62;\n"), std::string::npos) << diagram.Text();
    EXPECT_NE(diagram.Text().find("P1->>P2: a#59;b#35;c\\x0Ad#60;br/#62;#38;\n"), std::string::npos) << diagram.Text();
    EXPECT_EQ(DiagramProblems(diagram.Text()), Problems{});
}

TEST(SequenceDiagram, ANameCannotGiveTheViewerADirective)
{
    SequenceDiagram diagram({{"Host"}, {"%%{init: {}}%%"}});
    EXPECT_EQ(diagram.Text().find('%'), std::string::npos) << diagram.Text();
    EXPECT_NE(diagram.Text().find("P2 as #37;#37;{init: {}}#37;#37;\n"), std::string::npos) << diagram.Text();
    EXPECT_EQ(DiagramProblems(diagram.Text()), Problems{});
}

TEST(SequenceDiagram, ALongMessageIsBrokenIntoLinesAtItsSpaces)
{
    SequenceDiagram diagram({{"Host"}, {"Module"}});
    diagram.Message(0, 1, "InviteUsers(45 users: 2, 3, 1001, and many further ones, userName=Anna, meetingId=4711)");
    EXPECT_NE(diagram.Text().find(": InviteUsers(45 users: 2, 3, 1001, and many further ones, <br/>userName=Anna, "
                                  "meetingId=4711)\n"),
              std::string::npos)
        << diagram.Text();
}

TEST(SequenceDiagram, ATextWithoutSpacesIsBrokenAndCutBetweenCharacters)
{
    SequenceDiagram diagram({{"Host"}, {"Module"}});
    std::string text;
    while (text.size() < 1000)
    {
        text += "\u20ac";
    }
    diagram.Message(0, 1, text);
    EXPECT_NE(diagram.Text().find("\u20ac<br/>\u20ac"), std::string::npos) << diagram.Text();
    EXPECT_NE(diagram.Text().find("\u20ac...\n"), std::string::npos) << diagram.Text();
    EXPECT_LT(diagram.Text().size(), 450u);
}

TEST(SequenceDiagram, AFullDiagramAcceptsOnlyClosingNotes)
{
    SequenceDiagram diagram({{"Host"}, {"Module"}});
    size_t taken = 0;
    while (diagram.Message(0, 1, "Login(user " + std::to_string(taken) + ")"))
    {
        ASSERT_LT(++taken, 10'000u);
    }
    const std::string full = diagram.Text();
    EXPECT_FALSE(diagram.Note(0, std::string(50, 'n')));
    EXPECT_FALSE(diagram.Note(std::string(50, 'n')));
    EXPECT_EQ(diagram.Text(), full);
    diagram.ClosingNote(std::string(10'000, ';'));
    EXPECT_GT(diagram.Text().size(), full.size());
    EXPECT_GT(diagram.Text().size(), SequenceDiagram::kLargestText * 9 / 10);
    EXPECT_LE(diagram.Text().size(), SequenceDiagram::kLargestText);
    EXPECT_EQ(DiagramProblems(diagram.Text()), Problems{});
}
