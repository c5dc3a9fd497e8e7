#include "common_service/xml.h"

#include <gtest/gtest.h>

#include "common_service/xml_common.h"
#include "support/temp_dir.h"
#include "support/xml_place.h"

using PELU::CXml;

namespace {

constexpr char PSZ_TEXT[] =
    "<?xml version=\"1.0\"?>"
    "<root kind=\"r\">"
    "  <a>1</a><!-- between --><b x=\"y\">2</b><a>3</a>"
    "  <group><inner>4 &lt; 5</inner><empty/></group>"
    "</root>";

class XmlCursor : public testing::Test {
protected:
    /// The element where the cursor stands, as its name and its text.
    std::string Here() {
        const std::string strName = CurrentElement(m_xml);
        std::string strValue;
        CXmlCommon::Instance().GetElemValue(m_xml, strName, strValue, false);
        return strName == "nowhere" ? strName : strName + "=" + strValue;
    }

    std::string Stream() {
        unsigned int uiLen = 0;
        const char* pszText = m_xml.GetXMLStream(uiLen);
        if (pszText == nullptr) {
            return "no document";
        }
        EXPECT_EQ(std::string(pszText).size(), uiLen);
        return pszText;
    }

    CXml m_xml{nullptr};
};

class XmlWalk : public XmlCursor {
protected:
    XmlWalk() { EXPECT_TRUE(m_xml.Parse(PSZ_TEXT)); }
};

TEST_F(XmlWalk, NewDocumentStandsBeforeItsRoot) {
    EXPECT_EQ(Here(), "nowhere");
    EXPECT_FALSE(m_xml.IntoElem());
    EXPECT_TRUE(m_xml.FindElem("root"));
    EXPECT_EQ(Here(), "root=");
}

TEST_F(XmlWalk, FindElemExGoesToTheElement) {
    EXPECT_TRUE(m_xml.FindElemEx("root/b"));
    EXPECT_EQ(Here(), "b=2");
    EXPECT_TRUE(m_xml.FindElemEx("root/group"));
    EXPECT_TRUE(m_xml.IntoElem());
    EXPECT_EQ(Here(), "inner=4 < 5");
    EXPECT_TRUE(m_xml.FindElemEx("root/a"));
    EXPECT_TRUE(m_xml.NextElem());
    EXPECT_EQ(Here(), "b=2");
}

TEST_F(XmlWalk, FindElemRightAfterFindElemExLooksAmongTheChildren) {
    EXPECT_TRUE(m_xml.FindElemEx("root"));
    EXPECT_FALSE(m_xml.FindElem("root"));
    EXPECT_TRUE(m_xml.FindElem("b"));
    EXPECT_EQ(Here(), "b=2");
    EXPECT_TRUE(m_xml.FindElemEx("root/group"));
    EXPECT_FALSE(m_xml.FindElemEx("root/absent"));
    EXPECT_TRUE(m_xml.FindElem("empty"));
    EXPECT_EQ(Here(), "empty=");
}

TEST_F(XmlWalk, FindElemAfterAMoveFromThereLooksOnTheLevel) {
    EXPECT_TRUE(m_xml.FindElemEx("root/a"));
    EXPECT_TRUE(m_xml.NextElem());
    EXPECT_TRUE(m_xml.FindElem("group"));
    EXPECT_EQ(Here(), "group=");
}

TEST_F(XmlWalk, ElementThatFindElemExFoundCanBeChanged) {
    m_xml.Parse("<r><a/><b/></r>");
    EXPECT_TRUE(m_xml.FindElemEx("r/a"));
    EXPECT_TRUE(m_xml.SetElemValue("1"));
    EXPECT_TRUE(m_xml.AddElem("between"));
    EXPECT_EQ(Stream(), "<r><a>1</a><between/><b/></r>");
    EXPECT_TRUE(m_xml.FindElemEx("r/b"));
    EXPECT_TRUE(m_xml.AddChildElem("c"));
    EXPECT_TRUE(m_xml.IntoElem());
    EXPECT_TRUE(m_xml.SetElemValue("2"));
    EXPECT_TRUE(m_xml.FindElemEx("r/a"));
    EXPECT_TRUE(m_xml.RemoveElem());
    EXPECT_EQ(Stream(), "<r><between/><b><c>2</c></b></r>");
    EXPECT_EQ(Here(), "nowhere") << "before the first";
}

TEST_F(XmlWalk, FindElemLooksFromTheFirstOn) {
    m_xml.FindElemEx("root");
    EXPECT_TRUE(m_xml.FindElem("b"));
    EXPECT_TRUE(m_xml.FindElem("a"));
    EXPECT_EQ(Here(), "a=1");
}

TEST_F(XmlWalk, FindElemValueLooksFromTheCurrentOn) {
    m_xml.FindElemEx("root");
    EXPECT_TRUE(m_xml.FindElemValue("a"));
    EXPECT_EQ(Here(), "a=1");
    EXPECT_TRUE(m_xml.FindElemValue("a"));
    EXPECT_EQ(Here(), "a=1") << "the current element counts";
    EXPECT_TRUE(m_xml.NextElem());
    EXPECT_TRUE(m_xml.FindElemValue("a"));
    EXPECT_EQ(Here(), "a=3");
    EXPECT_FALSE(m_xml.FindElemValue("b"));
    EXPECT_EQ(Here(), "a=3");
}

TEST_F(XmlWalk, NextElemVisitsEverySibling) {
    m_xml.FindElemEx("root");
    m_xml.FindElem("a");
    std::string strVisited = Here();
    while (m_xml.NextElem()) {
        strVisited += " " + Here();
    }
    EXPECT_EQ(strVisited, "a=1 b=2 a=3 group=");
    EXPECT_EQ(Here(), "group=") << "at the last the cursor stays";
}

TEST_F(XmlWalk, IntoElemGoesToTheFirstChildAndOutBack) {
    m_xml.FindElem("root");
    EXPECT_TRUE(m_xml.IntoElem());
    EXPECT_EQ(Here(), "a=1");
    EXPECT_FALSE(m_xml.IntoElem()) << "text is no child level";
    EXPECT_EQ(Here(), "a=1");
    m_xml.OutOfElem();
    EXPECT_EQ(Here(), "root=");
    m_xml.OutOfElem();
    EXPECT_EQ(Here(), "root=") << "nothing is above the top level";
}

TEST_F(XmlWalk, OutOfElemGoesUpFromWhereFindElemExWent) {
    m_xml.FindElemEx("root/group/inner");
    m_xml.OutOfElem();
    EXPECT_EQ(Here(), "group=");
    m_xml.OutOfElem();
    EXPECT_EQ(Here(), "root=");
}

TEST_F(XmlWalk, MoveThatFailsLeavesTheCursor) {
    m_xml.FindElemEx("root");
    m_xml.FindElem("b");
    for (const char* pszName :
         {static_cast<const char*>("absent"), "", static_cast<const char*>(nullptr)}) {
        EXPECT_FALSE(m_xml.FindElem(pszName));
        EXPECT_FALSE(m_xml.FindElemEx(pszName));
        EXPECT_FALSE(m_xml.FindElemValue(pszName));
    }
    EXPECT_FALSE(m_xml.FindElemEx("root/a/absent"));
    EXPECT_FALSE(m_xml.FindElemEx("group"));
    EXPECT_EQ(Here(), "b=2");
}

TEST_F(XmlWalk, TextAtAPathIsReadWithoutMoving) {
    m_xml.FindElem("root");
    EXPECT_STREQ(m_xml.GetElemValueEx("root/group/inner"), "4 < 5");
    EXPECT_STREQ(m_xml.GetElemValueEx("root/group/empty"), "");
    EXPECT_STREQ(m_xml.GetElemValueEx("root/a"), "1");
    EXPECT_EQ(m_xml.GetElemValueEx("root/absent"), nullptr);
    EXPECT_EQ(m_xml.GetElemValueEx("group/inner"), nullptr);
    EXPECT_EQ(m_xml.GetElemValueEx(""), nullptr);
    EXPECT_EQ(m_xml.GetElemValueEx(nullptr), nullptr);
    EXPECT_EQ(Here(), "root=");
}

TEST_F(XmlWalk, RemovedElementLeavesTheCursorBeforeIt) {
    EXPECT_FALSE(m_xml.RemoveElem()) << "nothing stands before the first";
    m_xml.FindElemEx("root/b");
    EXPECT_TRUE(m_xml.RemoveElem());
    EXPECT_EQ(Here(), "a=1");
    EXPECT_TRUE(m_xml.RemoveElem());
    EXPECT_EQ(Here(), "nowhere");
    EXPECT_TRUE(m_xml.NextElem());
    EXPECT_EQ(Here(), "a=3");
}

TEST_F(XmlCursor, DocumentIsBuiltByAddingSiblingsAndChildren) {
    EXPECT_TRUE(m_xml.AddElem("Content"));
    EXPECT_TRUE(m_xml.AddChildElem("Info"));
    EXPECT_EQ(Here(), "Content=");
    EXPECT_TRUE(m_xml.IntoElem());
    EXPECT_TRUE(m_xml.AddChildElem("Code"));
    EXPECT_TRUE(m_xml.IntoElem());
    EXPECT_TRUE(m_xml.SetElemValue("n<1>&"));
    EXPECT_TRUE(m_xml.AddElem("FloatIP"));
    EXPECT_TRUE(m_xml.SetElemValue("10.0.0.1"));
    m_xml.OutOfElem();
    EXPECT_TRUE(m_xml.AddElem("Info"));
    EXPECT_EQ(Stream(),
              "<Content><Info><Code>n&lt;1&gt;&amp;</Code><FloatIP>10.0.0.1</FloatIP></Info>"
              "<Info/></Content>");
}

TEST_F(XmlCursor, IntoElemGoesToTheChildJustAdded) {
    m_xml.Parse("<r><first/></r>");
    m_xml.FindElem("r");
    EXPECT_TRUE(m_xml.AddChildElem("second"));
    EXPECT_TRUE(m_xml.AddChildElem("third"));
    EXPECT_TRUE(m_xml.IntoElem());
    EXPECT_EQ(Here(), "third=");
    m_xml.OutOfElem();
    EXPECT_TRUE(m_xml.IntoElem());
    EXPECT_EQ(Here(), "first=") << "once";
    EXPECT_EQ(Stream(), "<r><first/><second/><third/></r>");
}

TEST_F(XmlCursor, PlaceholderCanBeTakenAwayAgain) {
    m_xml.AddElem("List");
    m_xml.AddChildElem("Tmp");
    m_xml.IntoElem();
    m_xml.AddElem("Entry");
    EXPECT_TRUE(m_xml.FindElem("Tmp"));
    EXPECT_TRUE(m_xml.RemoveElem());
    m_xml.OutOfElem();
    EXPECT_EQ(Stream(), "<List><Entry/></List>");
    EXPECT_EQ(Here(), "List=");
}

TEST_F(XmlCursor, ElementIsAddedBehindTheCurrentOrBeforeTheFirst) {
    m_xml.Parse("<r><first/><a/><b/></r>");
    m_xml.FindElemEx("r/first");
    m_xml.RemoveElem();
    m_xml.AddElem("zero");
    m_xml.FindElem("a");
    m_xml.AddElem("between");
    EXPECT_EQ(Here(), "between=");
    EXPECT_EQ(Stream(), "<r><zero/><a/><between/><b/></r>");
}

TEST_F(XmlCursor, ValueReplacesAllTextAndKeepsChildren) {
    m_xml.Parse("<r>old<c/><!-- x -->more<![CDATA[data]]></r>");
    m_xml.FindElem("r");
    EXPECT_TRUE(m_xml.SetElemValue("new"));
    EXPECT_EQ(Here(), "r=new");
    EXPECT_EQ(Stream(), "<r>new<c/><!-- x --></r>");
    EXPECT_TRUE(m_xml.SetElemValue(""));
    EXPECT_EQ(Here(), "r=");
}

TEST_F(XmlCursor, ChangesNeedAnElementAndAName) {
    EXPECT_FALSE(m_xml.AddChildElem("x"));
    EXPECT_FALSE(m_xml.SetElemValue("x"));
    EXPECT_FALSE(m_xml.RemoveElem());
    EXPECT_FALSE(m_xml.AddElem(nullptr));
    EXPECT_FALSE(m_xml.AddElem(""));
    EXPECT_EQ(Stream(), "no document");
    m_xml.AddElem("r");
    EXPECT_FALSE(m_xml.AddChildElem(nullptr));
    EXPECT_FALSE(m_xml.AddChildElem(""));
    EXPECT_FALSE(m_xml.SetElemValue(nullptr));
    EXPECT_EQ(Stream(), "<r/>");
}

TEST_F(XmlCursor, StreamTellsTheDocumentAsItIsNow) {
    m_xml.AddElem("r");
    EXPECT_EQ(Stream(), "<r/>");
    m_xml.SetElemValue("1");
    EXPECT_EQ(Stream(), "<r>1</r>");
    m_xml.RemoveElem();
    EXPECT_EQ(Stream(), "no document");
}

TEST_F(XmlCursor, FileIsLoadedByLoadAndByTheConstructor) {
    CTempDir dir;
    const std::string strFile = dir.WriteFile("a.xml", PSZ_TEXT);
    EXPECT_TRUE(m_xml.Load(strFile.c_str()));
    EXPECT_STREQ(m_xml.GetElemValueEx("root/b"), "2");
    CXml xml(strFile.c_str());
    EXPECT_STREQ(xml.GetElemValueEx("root/b"), "2");
}

TEST_F(XmlCursor, FailedLoadLeavesAnEmptyDocumentThatCanBeUsed) {
    CTempDir dir;
    const std::string files[] = {dir.File("missing"), dir.GetPath(), dir.WriteFile("empty", ""),
                                 dir.WriteFile("bad", "<r><a></r>")};
    for (const std::string& strFile : files) {
        m_xml.Parse(PSZ_TEXT);
        m_xml.FindElem("root");
        EXPECT_FALSE(m_xml.Load(strFile.c_str())) << strFile;
        EXPECT_EQ(Stream(), "no document");
        EXPECT_EQ(Here(), "nowhere");
        EXPECT_TRUE(m_xml.AddElem("r"));
    }
    EXPECT_FALSE(m_xml.Load(nullptr));
}

class IllFormedXml : public XmlCursor, public testing::WithParamInterface<const char*> {};

TEST_P(IllFormedXml, IsRefused) {
    m_xml.Parse(PSZ_TEXT);
    EXPECT_FALSE(m_xml.Parse(GetParam()));
    EXPECT_EQ(Stream(), "no document");
}

INSTANTIATE_TEST_SUITE_P(All, IllFormedXml,
                         testing::Values(static_cast<const char*>(nullptr), "", " ", "text",
                                         "<!-- only -->", "<?xml version=\"1.0\"?>", "<r>", "<r/",
                                         "</r>", "<r></s>", "<r x=1/>", "<a/><b/>", "<a/>text",
                                         "text<a/>"));

}  // namespace
