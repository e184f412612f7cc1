#include "store/ClsStoreKeeper.h"

#include "ado/connection_string.h"
#include "ado/error.h"
#include "platform/file_system.h"
#include "platform/letter_case.h"
#include "platform/like.h"
#include "platform/text.h"
#include "store/table_names.h"
#include "store/value_text.h"

#include <cmath>

namespace kelb::store {

using ado::CursorType;
using ado::LockType;
using platform::left;
using platform::quoted;

namespace {

constexpr std::u16string_view kMainColumns =
    u" (id int identity(1,1) NOT NULL,url varchar(255),refurl varchar(255),reftxt varchar(255),content Memo)";
constexpr std::u16string_view kLearnColumns =
    u" (id int identity(1,1) not null,url memo,numson1 integer,numson2 integer,numpic integer,nummv integer)";
constexpr std::u16string_view kHoneyColumns =
    u" (id int identity(1,1) not null,url varchar(255),linktext varchar(255),refurl varchar(255),srcurl varchar(255),"
    u"content memo,lastmodify datetime,lastcheck datetime)";
constexpr std::u16string_view kHoneyIndex = u"create unique index urlidx on myhoney(url)";
constexpr std::u16string_view kMediaColumns =
    u" (id int identity(1,1) NOT NULL,url varchar(255),refurl varchar(255),reftxt varchar(255),lastcheckdate datetime,"
    u"srcsize long,srctype varchar(5),blndown YESNO)";
constexpr std::u16string_view kSexHoneyColumns =
    u" (id int identity(1,1) not null,url memo,refurl memo,reftxt varchar(255),sonpics memo,sonmvs memo,"
    u"numsonpics integer,numsonmvs integer)";
constexpr std::u16string_view kUserColumns =
    u" (id int identity(1,1) not null,userName varchar(255),userEmail varchar(255),userID varchar(255))";
constexpr std::u16string_view kForumColumns =
    u" (url varchar(255),boardid varchar(255),articleid varchar(255),start varchar(255),content memo,recdate date)";

constexpr std::size_t kAddressCut = 254;
constexpr std::size_t kContentCut = 204800;
constexpr std::size_t kLinkTextWidth = 255;
constexpr std::size_t kSonListCut = 10240;
constexpr std::size_t kLongAddressEnd = 1025; // the first length that is too long
constexpr std::int32_t kSonCountEnd = 10001;
constexpr std::size_t kErrorTextCut = 102400;
constexpr std::int16_t kGuardFailuresTold = 6;
constexpr int kDaysBeforeRefresh = 7;
constexpr std::u16string_view kListSeparator = u"<||>";
constexpr std::size_t kListLengthEnd = 30000;

std::u16string joined(std::initializer_list<std::u16string_view> pieces) {
    std::u16string text;
    for (const std::u16string_view piece : pieces) {
        text += piece;
    }
    return text;
}

std::u16string selectByUrl(std::u16string_view columns, std::u16string_view table, std::u16string_view url,
                           std::u16string_view equals = u" where url='") {
    return joined({u"select ", columns, u" from ", table, equals, quoted(url), u"'"});
}

bool isAddress(std::u16string_view url) {
    return platform::matchesPattern(platform::lowerCase(url), u"http://*") && url.size() < kLongAddressEnd;
}

/// Days between the dates, the time of day left out, as the calendar counts them.
long daysFrom(const platform::DateTime& from, const platform::DateTime& to) {
    const auto day = [](const platform::DateTime& time) {
        return std::lround(platform::toSerial({time.year, time.month, time.day, 0, 0, 0}));
    };
    return day(to) - day(from);
}

} // namespace

ClsStoreKeeper::ClsStoreKeeper(platform::Platform& platform, ado::Environment& environment)
    : platform_(platform), connection_(environment) {}

bool ClsStoreKeeper::IsReady() const {
    return !mainTable_.empty() && !learnTable_.empty() && connection_.State() == ado::ObjectState::Open;
}

bool ClsStoreKeeper::tableExists(std::u16string_view tableName) {
    return store::tableExists(tableName, connection_);
}

bool ClsStoreKeeper::Save2DB(std::u16string_view content, std::u16string_view url, std::u16string_view refurl,
                             std::u16string_view reftxt) {
    if (!IsReady()) {
        return false;
    }
    try {
        mainRows_.AddNew();
        mainRows_.set(u"url", left(url, kAddressCut));
        mainRows_.set(u"refurl", left(refurl, kAddressCut));
        mainRows_.set(u"reftxt", left(reftxt, kAddressCut));
        mainRows_.set(u"content", left(content, kContentCut));
        mainRows_.Update();
        return true;
    } catch (const ado::Error&) {
        mainRows_.CancelUpdate();
        return false;
    }
}

bool ClsStoreKeeper::IsRecExists(std::u16string_view url, std::u16string_view tableName) {
    if (!IsReady()) {
        return false;
    }
    ado::Recordset rows;
    rows.Open(selectByUrl(u"url", tableName, url, u" where url = '"), connection_, CursorType::Keyset,
              LockType::ReadOnly);
    return !rows.Bof() && !rows.Eof();
}

bool ClsStoreKeeper::iniStoreKeeper(std::u16string_view dbPath, std::u16string_view tableName,
                                    std::u16string_view learnTableName) {
    if (!platform_.files.fileExists(dbPath)) {
        return false;
    }
    closeStore();
    connection_.Open(ado::jetConnectionString(dbPath));
    createMissingTables(tableName, learnTableName);
    mainRows_.Open(joined({u"select * from ", tableName}), connection_, CursorType::Keyset, LockType::Optimistic);
    urlsMv_.Open(u"select * from URLsMV", connection_, CursorType::Keyset, LockType::Optimistic);
    urlsPic_.Open(u"select * from URLsPIC", connection_, CursorType::Keyset, LockType::Optimistic);
    urlsMp3_.Open(u"select * from URLsMP3", connection_, CursorType::Keyset, LockType::Optimistic);
    mainTable_ = tableName;
    learnTable_ = learnTableName;
    return true;
}

void ClsStoreKeeper::closeStore() {
    mainTable_.clear();
    learnTable_.clear();
    for (ado::Recordset* rows : {&mainRows_, &urlsMv_, &urlsPic_, &urlsMp3_}) {
        rows->Close();
    }
    connection_.Close();
}

void ClsStoreKeeper::createMissingTables(std::u16string_view tableName, std::u16string_view learnTableName) {
    createIfMissing(tableName, kMainColumns);
    createIfMissing(learnTableName, kLearnColumns);
    if (!tableExists(u"myhoney")) {
        createIfMissing(u"myhoney", kHoneyColumns);
        connection_.Execute(kHoneyIndex);
    }
    for (const std::u16string_view media : {u"URLsMV", u"URLsMP3", u"URLsPIC"}) {
        createIfMissing(media, kMediaColumns);
    }
    createIfMissing(u"sexhoney", kSexHoneyColumns);
    createIfMissing(u"DVUser", kUserColumns);
    createIfMissing(u"bbsforum", kForumColumns);
}

void ClsStoreKeeper::createIfMissing(std::u16string_view tableName, std::u16string_view columns) {
    if (!tableExists(tableName)) {
        connection_.Execute(joined({u"create table ", tableName, columns}));
    }
}

bool ClsStoreKeeper::updateSexHoney(std::u16string_view url, std::u16string_view refurl, std::u16string_view reftxt,
                                    std::u16string_view sonpics, std::u16string_view sonmvs, std::int32_t numsonpics,
                                    std::int32_t numsonmvs) {
    if (!IsReady() || !isAddress(url) || refurl.size() >= kLongAddressEnd || numsonpics >= kSonCountEnd ||
        numsonmvs >= kSonCountEnd) {
        return false;
    }
    ado::Recordset rows;
    rows.Open(selectByUrl(u"*", u"sexhoney", url), connection_, CursorType::Keyset, LockType::Optimistic);
    if (rows.Eof()) {
        rows.AddNew();
        rows.set(u"url", url);
    }
    rows.set(u"refurl", refurl);
    rows.set(u"reftxt", left(reftxt, kLinkTextWidth));
    rows.set(u"sonpics", left(sonpics, kSonListCut));
    rows.set(u"sonmvs", left(sonmvs, kSonListCut));
    rows.set(u"numsonpics", ado::Value(numsonpics));
    rows.set(u"numsonmvs", ado::Value(numsonmvs));
    rows.Update();
    return true;
}

bool ClsStoreKeeper::updateLearn(std::u16string_view url, std::int32_t numson1, std::int32_t numson2,
                                 std::int32_t numpic, std::int32_t nummv) {
    if (!IsReady() || !isAddress(url)) {
        return false;
    }
    ado::Recordset rows;
    rows.Open(selectByUrl(u"*", learnTable_, url), connection_, CursorType::Keyset, LockType::Optimistic);
    if (rows.Eof()) {
        rows.AddNew();
        rows.set(u"url", url);
    }
    rows.set(u"numson1", ado::Value(numson1));
    rows.set(u"numson2", ado::Value(numson2));
    rows.set(u"numpic", ado::Value(numpic));
    rows.set(u"nummv", ado::Value(nummv));
    rows.Update();
    return true;
}

ado::Recordset* ClsStoreKeeper::mediaTable(std::u16string_view srctype) {
    if (srctype == u".mpg" || srctype == u"mpeg") {
        return &urlsMv_;
    }
    if (srctype == u".jpg") {
        return &urlsPic_;
    }
    return srctype == u".mp3" ? &urlsMp3_ : nullptr;
}

bool ClsStoreKeeper::Save2DBURLsSrc(std::u16string_view url, std::u16string_view refurl, std::u16string_view reftxt,
                                    std::u16string_view lastcheckdate, std::u16string_view srcsize,
                                    std::u16string_view srctype, std::u16string_view blndown) {
    constexpr std::size_t kTypeWidth = 5;
    if (!IsReady()) {
        return false;
    }
    ado::Recordset* rows = mediaTable(srctype);
    // An unknown type of a plausible length is passed over without a word; a longer one is a failure of the guard.
    if (rows == nullptr && srctype.size() <= kTypeWidth) {
        return false;
    }
    const auto date = platform::parseDateTime(lastcheckdate);
    const auto size = parseNumber(srcsize);
    if (rows == nullptr || url.size() > kLinkTextWidth || reftxt.size() >= kLinkTextWidth || !date || !size) {
        noteGuardFailure(url);
        return false;
    }
    const auto wholeSize = toLong(*size);
    const auto down = parseBoolean(blndown);
    if (!wholeSize || !down) {
        return false; // conversions that the guard does not look at; the row is abandoned before it begins
    }
    try {
        rows->AddNew();
        rows->set(u"url", url);
        rows->set(u"refurl", refurl.size() <= kLinkTextWidth ? refurl : std::u16string_view());
        rows->set(u"reftxt", reftxt);
        rows->set(u"lastcheckdate", ado::fromDateTime(*date));
        rows->set(u"srcsize", ado::Value(*wholeSize));
        rows->set(u"srctype", srctype);
        rows->set(u"blndown", ado::Value(*down));
        rows->Update();
        return true;
    } catch (const ado::Error&) {
        rows->CancelUpdate();
        return false;
    }
}

void ClsStoreKeeper::noteGuardFailure(std::u16string_view url) {
    if (guardFailures_ >= kGuardFailuresTold) {
        return;
    }
    ++guardFailures_;
    errorText_ += joined({u"出错(ClsStoreKeeper Save2DBURLsSrc): 字段超长, ", u"\r\n", url});
    if (errorText_.size() > kErrorTextCut) {
        errorText_.erase(0, errorText_.size() - kErrorTextCut);
    }
}

bool ClsStoreKeeper::Save2DBDVUser(std::u16string_view userName, std::u16string_view userEmail,
                                   std::u16string_view userID) {
    if (!IsReady()) {
        return false;
    }
    for (const std::u16string_view text : {userName, userEmail, userID}) {
        if (text.empty() || text.size() >= kLinkTextWidth) {
            return false;
        }
    }
    if (!parseNumber(userID)) {
        return false;
    }
    ado::Recordset rows;
    rows.Open(joined({u"select * from DVUser where username='", quoted(userName), u"' or useremail='",
                      quoted(userEmail), u"'"}),
              connection_, CursorType::Keyset, LockType::Optimistic);
    if (rows.Eof()) {
        rows.AddNew();
        rows.set(u"username", userName);
        rows.set(u"useremail", userEmail);
        rows.set(u"userID", userID);
        rows.Update();
        return true;
    }
    // Only the first clash of an instance is told.
    if (errorText_.find(u"save2DBDVUser") == std::u16string::npos) {
        errorText_ += joined({u"\r\n", u"ClsStoreKeeper save2DBDVUser Found Data 异常: userName: ", userName,
                              u" userEmail: ", userEmail, u" userID: ", userID});
    }
    return false;
}

bool ClsStoreKeeper::Save2DBbbsforum(std::u16string_view url, std::u16string_view boardid,
                                     std::u16string_view articleid, std::u16string_view start,
                                     std::u16string_view content, const platform::DateTime& recdate) {
    if (!IsReady()) {
        return false;
    }
    ado::Recordset rows;
    rows.Open(joined({u"select * from bbsforum where boardid='", quoted(boardid), u"' and articleid='",
                      quoted(articleid), u"'"}),
              connection_, CursorType::Keyset, LockType::Optimistic);
    if (rows.Eof()) {
        rows.AddNew();
    } else {
        const auto stored = ado::toDateTime(rows.value(u"recdate"));
        if (stored && daysFrom(*stored, recdate) <= kDaysBeforeRefresh) {
            return false;
        }
    }
    rows.set(u"url", url);
    rows.set(u"boardid", boardid);
    rows.set(u"articleid", articleid);
    rows.set(u"start", start);
    rows.set(u"content", content);
    rows.set(u"recdate", ado::fromDateTime(recdate));
    rows.Update();
    return true;
}

bool ClsStoreKeeper::ReadFromDBURLsMV(std::u16string_view sql, std::u16string& outList) {
    if (!IsReady()) {
        return false;
    }
    // The table made here has no "lastvisitdate" (it is "lastcheckdate"). Kept: the default query serves tables that
    // have it, and is an error on our own.
    if (sql.empty()) {
        sql = u"select * from URLsMV order by lastvisitdate DESC";
    }
    ado::Recordset rows;
    rows.Open(sql, connection_, CursorType::Keyset, LockType::ReadOnly);
    for (int counter = 0; !rows.Eof(); ++counter, rows.MoveNext()) {
        outList += rows.text(u"url");
        outList += kListSeparator;
        // The counter is tested before it counts this row. Kept: 302 addresses come back, not 300.
        if (outList.size() > kListLengthEnd || counter > 300) {
            break;
        }
    }
    return true;
}

void ClsStoreKeeper::UpdateRec(std::u16string_view url, std::u16string_view tableName, std::u16string_view fieldName,
                               const ado::Value& value) {
    if (!IsReady()) {
        return;
    }
    ado::Recordset rows;
    rows.Open(selectByUrl(u"*", tableName, url), connection_, CursorType::Keyset, LockType::Optimistic);
    if (rows.RecordCount() != 1) {
        return;
    }
    rows.set(fieldName, value);
    rows.Update();
}

std::u16string ClsStoreKeeper::getSpecHtml(std::u16string_view url) {
    if (!IsReady()) {
        return {};
    }
    ado::Recordset rows;
    rows.Open(selectByUrl(u"*", mainTable_, url), connection_, CursorType::Keyset, LockType::ReadOnly);
    return rows.Eof() ? std::u16string() : rows.text(u"content");
}

} // namespace kelb::store
