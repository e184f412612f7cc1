#include "jobs/configuration.h"

namespace kelb::jobs {
namespace {

using enum SettingInfo::Shape;

constexpr std::array<SettingInfo, kSettingCount> kTable{{
    {Setting::SetupAdultFolder, u"Setup", u"adultFolder", Text, 0, u"",
     "Data folder: \\Comb.mdb in it is the source database, \\Comb2.mdb the default destination of the set-up dialog"},
    {Setting::SetupAltSource, u"Setup", u"altSource", Text, 0, u"G:\\KelbFolder4WX\\Comb.mdb",
     "Second proposal in the set-up dialog's list of source databases"},
    {Setting::SetupSiteAPrefix, u"Setup", u"siteAPrefix", Text, 0, u"",
     "Scheme and host of site A in the set-up dialog's proposed queries"},
    {Setting::SetupSiteBPrefix, u"Setup", u"siteBPrefix", Text, 0, u"",
     "Scheme and host of site B in the set-up dialog's proposed queries"},
    {Setting::SetupPageEncoding, u"Setup", u"pageEncoding", Text, 0, u"auto",
     "How saved pages are read: auto, 936 or utf-8"},
    {Setting::SetupChannels, u"Setup", u"channels", Text, 0, u"21,22,23,24,28,30,31,32,33,34,35,40",
     "Channel numbers that the window's lists show"},
    {Setting::Drives, u"Drives", u"", Letters, 0, u"", "One key a drive letter: the folder that stands for it here"},
    {Setting::Shares, u"Shares", u"share", Numbered, 26, u"",
     "\\\\host\\share, then |, then the folder that stands for it here"},
    {Setting::CrawlerMachineName, u"Crawler", u"machineName", Text, 0, u"",
     "Name of the LAN machine that crawled, for the label of the LAN switch"},
    {Setting::CrawlerLanFolder, u"Crawler", u"lanFolder", Text, 0, u"",
     "What the window proposes as LAN folder; page files lie below it"},
    {Setting::PathsWxdb, u"Paths", u"wxdb", Text, 0, u"D:\\KelbFolder(Output)\\wxdb.mdb",
     "Destination database of the imports"},
    {Setting::PathsFillDb, u"Paths", u"fillDb", Text, 0, u"G:\\KelbFolder\\Comb.mdb",
     "Database of the title and content fill"},
    {Setting::PathsMultiDb, u"Paths", u"multiDb", Text, 0, u"D:\\KelbFolder4打印机\\Comb.mdb",
     "Source database of the multi-page import"},
    {Setting::PathsDvUserDb, u"Paths", u"dvUserDb", Text, 0, u"D:\\KelbFolder\\Comb(2010-12-27).mdb",
     "Database of the user-name export"},
    {Setting::ForumBoardName, u"Forum", u"boardName", Text, 0, u"",
     "Board name in the title of notice pages; without it no page is a notice page"},
    {Setting::ForumImportCid, u"Forum", u"importCid", Number, 0, u"28", "Channel that the forum import selects"},
    {Setting::ForumFillCid, u"Forum", u"fillCid", Number, 0, u"40", "Channel that the forum fill selects"},
    {Setting::ForumMendBreaks, u"Forum", u"mendBreaks", Number, 0, u"0",
     "1: the line break that ends a post is written as <br>; 0: it stays in pieces, < br />, which browsers show"},
    {Setting::DedupForumSites, u"Dedup", u"forumSite", Numbered, 8, u"",
     "Parts of addresses of forums, for the removal of duplicates"},
    {Setting::DedupArticleSites, u"Dedup", u"articleSite", Numbered, 7, u"",
     "Parts of addresses of article sites, for the removal of duplicates"},
    {Setting::DedupPublicForum, u"Dedup", u"publicForum", Text, 0, u"",
     "Part of the address of the public forum, compared in lower case"},
    {Setting::DedupRouter, u"Dedup", u"router", Text, 0, u"",
     "Beginning of the address of the LAN router, where the crawler landed without a network"},
    {Setting::ArticlesSites, u"Articles", u"site", Rows, 5, u"",
     "Parts of the addresses of the five article sites, in the order of their marker rows"},
    {Setting::ArticlesRow5TitleStarts, u"Articles", u"row5TitleStart", Numbered, 9, u"<h1>",
     "Start markers of titles of the fifth article site"},
    {Setting::ArticlesRow5TitleEnds, u"Articles", u"row5TitleEnd", Numbered, 9, u"</h1>",
     "End markers of titles of the fifth article site"},
    {Setting::ArticlesSiteAPrefix, u"Articles", u"siteAPrefix", Text, 0, u"",
     "Address prefix of the multi-page import's site, without / at its end"},
    {Setting::ArticlesMultiTable, u"Articles", u"multiTable", Text, 0, u"bbsforum",
     "Source table of the multi-page import"},
    {Setting::SqlServerServer, u"SqlServer", u"server", Text, 0, u"", "Address of the SQL Server"},
    {Setting::SqlServerWxDbConnection, u"SqlServer", u"wxDBConnection", Text, 0, u"",
     "Whole connection string for wxDB; empty: the built-in one with the server's address"},
    {Setting::SqlServerMendDbConnection, u"SqlServer", u"mendDBConnection", Text, 0, u"",
     "Whole connection string for mendDB; empty: the built-in one with the server's address"},
    {Setting::MergeSiteLabel, u"Merge", u"siteLabel", Text, 0, u"",
     "Site label in the name of the fault merge's database"},
    {Setting::MergeSiteFragment, u"Merge", u"siteFragment", Text, 0, u"",
     "Part of the address of the question-and-answer site"},
    {Setting::MergeBrandLabel, u"Merge", u"brandLabel", Text, 0, u"TCL王牌",
     "Brand written in front of the set code in merged titles"},
    {Setting::MergeTable, u"Merge", u"table", Text, 0, u"wxtcl", "Table of the fault merge"},
    {Setting::AddFieldsSiteLabel, u"AddFields", u"siteLabel", Text, 0, u"",
     "Site label in the name of the database that gets fields"},
    {Setting::AddFieldsTable, u"AddFields", u"table", Text, 0, u"wxhx", "Table that gets fields"},
    {Setting::ParamsShareFolder, u"Params", u"shareFolder", Text, 0, u"",
     "Folder of the product pages and of their Comb.mdb"},
    {Setting::ParamsPortalPath, u"Params", u"portalPath", Text, 0, u"", "Address path of the product portal"},
    {Setting::ParamsSourceTable, u"Params", u"sourceTable", Text, 0, u"bbsforum",
     "Crawl table of the parameter import"},
    {Setting::ParamsNoValueUrl, u"Params", u"noValueUrl", Text, 0, u"http://none",
     "Address stored for pages that come from a folder"},
    {Setting::TemplateModelPage, u"Template", u"modelPage", Text, 0, u"HTMLModel\\HTMLModel.htm",
     "Model page of the template extractor, in the application folder"},
    {Setting::TemplateSiteName, u"Template", u"siteName", Text, 0, u"",
     "The operator's own site name, blanked in extracted texts"},
    {Setting::TemplateTimerMs, u"Template", u"timerMs", Number, 0, u"1000",
     "Milliseconds between two pages in slow mode"},
    {Setting::ViewerPage, u"Viewer", u"page", Text, 0, u"", "Page file that the page viewer opens"},
    {Setting::ViewerAddress, u"Viewer", u"address", Text, 0, u"", "What the page viewer's address box holds at first"},
    {Setting::FileStorePrefix, u"FileStore", u"prefix", Text, 0, u"", "Beginning of the names of stored page files"},
    {Setting::FileStoreArticleBase, u"FileStore", u"articleBase", Text, 0, u"",
     "Base folder of the older walk over stored page files"},
    {Setting::SafetyTrash, u"Safety", u"trash", Text, 0, u"",
     "Folder to which deleted page files and rows go; empty: they are deleted"},
    {Setting::SafetyLogFile, u"Safety", u"logFile", Text, 0, u"",
     "Log file; each run writes one of its own, with the time of its start in the name"},
    {Setting::SafetyMaxDeletePercent, u"Safety", u"maxDeletePercent", Number, 0, u"20",
     "Share of rows without page file above which the removal of duplicates asks first"},
}};

constexpr bool inOrder() {
    for (std::size_t i = 0; i < kTable.size(); ++i) {
        if (static_cast<std::size_t>(kTable[i].setting) != i) {
            return false;
        }
    }
    return true;
}
static_assert(inOrder(), "the table is indexed by Setting");

} // namespace

std::span<const SettingInfo, kSettingCount> settingTable() noexcept {
    return kTable;
}

const SettingInfo& settingInfo(Setting setting) noexcept {
    return kTable[static_cast<std::size_t>(setting)];
}

} // namespace kelb::jobs
