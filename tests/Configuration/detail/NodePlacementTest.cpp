#include "Configuration/detail/NodePlacement.h"

#include "Configuration/detail/XmlDocument.h"
#include "Configuration/detail/XmlNode.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>

namespace {

using Veltrani::ConfigurationDetail::FaultList;
using Veltrani::ConfigurationDetail::XmlDocument;
namespace Xml = Veltrani::ConfigurationDetail::Xml;

/// What becomes of a document, without its declaration.
std::string after(std::string_view text, const std::function<void(xmlNode*)>& change) {
    FaultList faults("t");
    const XmlDocument document = XmlDocument::parse(text, faults);
    EXPECT_EQ(faults.message(), L"");
    change(document.root());
    const std::string changed = document.text();
    return changed.substr(changed.find('\n') + 1);
}

std::string afterAppending(std::string_view text) {
    return after(text, [](xmlNode* root) {
        xmlNode* const parent = Xml::child(root, "p") == nullptr ? root : Xml::child(root, "p");
        Xml::appendIndented(parent, Xml::newElement(root->doc, "new"));
    });
}

std::string afterExchange(std::string_view text) {
    return after(text, [](xmlNode* root) { Xml::exchange(Xml::child(root, "a"), Xml::child(root, "b")); });
}

std::string afterRemoval(std::string_view text) {
    return after(text, [](xmlNode* root) { Xml::removeIndented(Xml::child(root, "a")); });
}

/// With the names a, b, new, c, d in this order.
std::string afterInsertion(std::string_view text) {
    return after(text, [](xmlNode* root) {
        Xml::insertInOrder(root, Xml::OwnedNode(Xml::newElement(root->doc, "new")), {"a", "b", "new", "c", "d"});
    });
}

TEST(NodePlacement, AppendsOnALineOfItsOwn) {
    EXPECT_EQ(afterAppending("<r>\n  <a/>\n</r>"), "<r>\n  <a/>\n  <new/>\n</r>\n");
    EXPECT_EQ(afterAppending("<r>\n  <p>\n    <a/>\n  </p>\n</r>"), "<r>\n  <p>\n    <a/>\n    <new/>\n  </p>\n</r>\n");
}

TEST(NodePlacement, AppendsBehindCommentsAndVendorContent) {
    EXPECT_EQ(afterAppending("<r>\n  <a/> <!-- a -->\n</r>"), "<r>\n  <a/> <!-- a -->\n  <new/>\n</r>\n");
    EXPECT_EQ(afterAppending("<r>\n  <a/>\n  <v:b xmlns:v=\"urn:v\"/>\n</r>"),
              "<r>\n  <a/>\n  <v:b xmlns:v=\"urn:v\"/>\n  <new/>\n</r>\n");
}

TEST(NodePlacement, AppendsToAnEmptyElementAsTheDocumentIndents) {
    EXPECT_EQ(afterAppending("<r>\n  <p/>\n</r>"), "<r>\n  <p>\n    <new/>\n  </p>\n</r>\n");
    EXPECT_EQ(afterAppending("<r>\n\t<p>\n\t</p>\n</r>"), "<r>\n\t<p>\n\t\t<new/>\n\t</p>\n</r>\n");
    EXPECT_EQ(afterAppending("<r/>"), "<r>\n    <new/>\n</r>\n");
}

TEST(NodePlacement, ADocumentWithoutLinesStaysWithout) {
    EXPECT_EQ(afterAppending("<r><a/></r>"), "<r><a/><new/></r>\n");
    EXPECT_EQ(afterAppending("<r><p/></r>"), "<r><p><new/></p></r>\n");
}

TEST(NodePlacement, InsertsBehindTheNearestThatPrecedesIt) {
    EXPECT_EQ(afterInsertion("<r>\n  <a/>\n  <b/>\n  <c/>\n</r>"), "<r>\n  <a/>\n  <b/>\n  <new/>\n  <c/>\n</r>\n");
    EXPECT_EQ(afterInsertion("<r>\n  <c/>\n  <b/> <!-- b -->\n\n  <a/>\n</r>"),
              "<r>\n  <c/>\n  <b/> <!-- b -->\n  <new/>\n\n  <a/>\n</r>\n");
    EXPECT_EQ(afterInsertion("<r>\n  <a/>\n  <a/>\n  <!-- c -->\n  <c/>\n</r>"),
              "<r>\n  <a/>\n  <a/>\n  <new/>\n  <!-- c -->\n  <c/>\n</r>\n");
    EXPECT_EQ(afterInsertion("<r><a/><c/></r>"), "<r><a/><new/><c/></r>\n");
}

TEST(NodePlacement, InsertsElseInFrontOfTheNearestThatFollowsAndItsComments) {
    EXPECT_EQ(afterInsertion("<r>\n  <d/>\n  <!-- c -->\n  <c/>\n</r>"),
              "<r>\n  <d/>\n  <new/>\n  <!-- c -->\n  <c/>\n</r>\n");
    EXPECT_EQ(afterInsertion("<r><d/></r>"), "<r><new/><d/></r>\n");
}

TEST(NodePlacement, InsertsElseAtTheEnd) {
    EXPECT_EQ(afterInsertion("<r>\n  <v:a xmlns:v=\"urn:v\"/>\n</r>"),
              "<r>\n  <v:a xmlns:v=\"urn:v\"/>\n  <new/>\n</r>\n");
    EXPECT_EQ(afterInsertion("<r/>"), "<r>\n    <new/>\n</r>\n");
}

TEST(NodePlacement, ExchangesLines) {
    EXPECT_EQ(afterExchange("<r>\n  <a/>\n  <b/>\n</r>"), "<r>\n  <b/>\n  <a/>\n</r>\n");
    EXPECT_EQ(afterExchange("<r><a/><b/></r>"), "<r><b/><a/></r>\n");
}

TEST(NodePlacement, CommentsAboveAndBehindMoveAlong) {
    EXPECT_EQ(
        afterExchange("<r>\n  <!-- a1 -->\n  <!-- a2 -->\n  <a/> <!-- a3 -->\n  <!-- b1 -->\n  <b/> <!-- b2 -->\n</r>"),
        "<r>\n  <!-- b1 -->\n  <b/> <!-- b2 -->\n  <!-- a1 -->\n  <!-- a2 -->\n  <a/> <!-- a3 -->\n</r>\n");
}

TEST(NodePlacement, WhatStandsApartStays) {
    EXPECT_EQ(afterExchange("<r>\n  <!-- all -->\n\n  <a/>\n  <v:m xmlns:v=\"urn:v\"/>\n  <b/>\n</r>"),
              "<r>\n  <!-- all -->\n\n  <b/>\n  <v:m xmlns:v=\"urn:v\"/>\n  <a/>\n</r>\n");
    EXPECT_EQ(afterExchange("<r><!-- all -->\n  <a/>\n  <b/>\n</r>"), "<r><!-- all -->\n  <b/>\n  <a/>\n</r>\n");
}

TEST(NodePlacement, ExchangingTwiceRestoresTheDocument) {
    const std::string text =
        "<r>\n  <!-- a -->\n  <a/> <!-- x --> <?y z?>\n\n  <!-- apart -->\n\n  <b>t</b><!-- b -->\n</r>\n";
    EXPECT_NE(afterExchange(text), text);
    EXPECT_EQ(after(text,
                    [](xmlNode* root) {
                        Xml::exchange(Xml::child(root, "a"), Xml::child(root, "b"));
                        Xml::exchange(Xml::child(root, "b"), Xml::child(root, "a"));
                    }),
              text);
}

TEST(NodePlacement, RemovesTheLine) {
    EXPECT_EQ(afterRemoval("<r>\n  <a/>\n  <b/>\n</r>"), "<r>\n  <b/>\n</r>\n");
    EXPECT_EQ(afterRemoval("<r>\n  <b/>\n  <a/>\n</r>"), "<r>\n  <b/>\n</r>\n");
    EXPECT_EQ(afterRemoval("<r>\n  <a/>\n</r>"), "<r>\n</r>\n");
    EXPECT_EQ(afterRemoval("<r><a/><b/></r>"), "<r><b/></r>\n");
}

TEST(NodePlacement, RemovalKeepsBlankLinesAndNeighbours) {
    EXPECT_EQ(afterRemoval("<r>\n  <b/>\n\n  <a/>\n\n  <c/>\n</r>"), "<r>\n  <b/>\n\n\n  <c/>\n</r>\n");
    EXPECT_EQ(afterRemoval("<r>\n  <b/> <a/>\n</r>"), "<r>\n  <b/>\n</r>\n");
    EXPECT_EQ(afterRemoval("<r>\n  <a/> <b/>\n</r>"), "<r>\n  <b/>\n</r>\n");
}

TEST(NodePlacement, RemovalKeepsComments) {
    EXPECT_EQ(afterRemoval("<r>\n  <!-- above -->\n  <a/> <!-- behind -->\n  <b/>\n</r>"),
              "<r>\n  <!-- above -->\n  <!-- behind -->\n  <b/>\n</r>\n");
}

TEST(NodePlacement, TextsThatMeetAreOneAgain) {
    // Two neighbouring texts would hide the indentation from the next change.
    EXPECT_EQ(after("<r>\n\n  <a/>\n  <b/>\n</r>",
                    [](xmlNode* root) {
                        Xml::removeIndented(Xml::child(root, "a"));
                        Xml::appendIndented(root, Xml::newElement(root->doc, "new"));
                    }),
              "<r>\n\n  <b/>\n  <new/>\n</r>\n");
}

}  // namespace
