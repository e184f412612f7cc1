#pragma once

#include <QString>
#include <QtGlobal>

/// Every text of the windows that is our own. The captions that users have known for years stand in the .ui files and
/// are not translated; everything here is, through Qt's translation files (context "KelbExtractor").
namespace kelb::app::texts {

/// The text in the user's language; the Chinese one where there is no translation.
[[nodiscard]] QString shown(const char* text);

#define KELB_TEXT(text) QT_TRANSLATE_NOOP("KelbExtractor", text)

/// A text by the object name of its widget or menu entry, or by another fixed word.
struct ObjectText {
    const char* object;
    const char* text;
};

/// Group boxes, menus and menu entries, buttons without a caption of their own.
inline constexpr ObjectText kCaptions[] = {
    {"GroupDatabases", KELB_TEXT("数据库")},
    {"GroupPages", KELB_TEXT("页面文件")},
    {"GroupForum", KELB_TEXT("论坛")},
    {"GroupArticles", KELB_TEXT("文章")},
    {"GroupDuplicates", KELB_TEXT("去重与合并")},
    {"GroupParameters", KELB_TEXT("家电参数")},
    {"GroupOthers", KELB_TEXT("其他")},
    {"GroupLog", KELB_TEXT("日志（最新的在最上面）")},
    {"MenuWindows", KELB_TEXT("窗口(&W)")},
    {"MenuOptions", KELB_TEXT("选项(&O)")},
    {"MenuHelp", KELB_TEXT("帮助(&H)")},
    {"ActionSetup", KELB_TEXT("参数设定(&S)…")},
    {"ActionViewer", KELB_TEXT("页面查看器(&V)")},
    {"ActionQuit", KELB_TEXT("退出(&Q)")},
    {"ActionDryRun", KELB_TEXT("试运行：什么都不改变(&D)")},
    {"ActionTrash", KELB_TEXT("删除时移到回收文件夹(&T)…")},
    {"ActionLogFile", KELB_TEXT("同时写入日志文件(&L)…")},
    {"ActionProductRows", KELB_TEXT("提取参数：数据库循环(&R)")},
    {"ActionSaveLog", KELB_TEXT("日志另存为(&A)…")},
    {"ActionClearLog", KELB_TEXT("清空日志(&C)")},
    {"ActionJobs", KELB_TEXT("各项任务说明(&J)")},
    {"ActionAbout", KELB_TEXT("关于(&A)")},
    {"BrowseSource", KELB_TEXT("浏览…")},
    {"BrowseDestination", KELB_TEXT("浏览…")},
    {"BrowseFolder", KELB_TEXT("浏览…")},
};

/// Which letter of a caption gets Alt as its key: the first one equal to `key`.
struct Mnemonic {
    const char* object;
    char key;
};
inline constexpr Mnemonic kMnemonics[] = {
    {"Label2", 'S'},    {"Label3", 'D'},    {"Command1", 'B'},  {"Command15", 'F'}, {"Command12", '2'},
    {"Command13", '3'}, {"Command11", '1'}, {"Command16", 'e'}, {"Command10", 'C'}, {"Command5", 'K'},
    {"Command14", 'P'}, {"Command3", 'U'},  {"Command4", 'l'},  {"Command7", 'R'},  {"Check3", 'T'},
};

/// What a field does, in one sentence. The tooltips of the job buttons come from kJobs.
inline constexpr ObjectText kToolTips[] = {
    {"TextSource", KELB_TEXT("采集得到的 Access 数据库；留空时用 Kelb.ini 或任务自带的路径，可把文件拖到这里。")},
    {"Text3", KELB_TEXT("保存提取结果的 Access 数据库；可把文件拖到这里。")},
    {"BrowseSource", KELB_TEXT("选择源数据库文件；不改变任何数据。")},
    {"BrowseDestination", KELB_TEXT("选择目的数据库文件；不改变任何数据。")},
    {"BrowseFolder", KELB_TEXT("选择采集机页面文件所在的文件夹；不改变任何数据。")},
    {"Combo1", KELB_TEXT("要处理的频道；只作提示，任务按各自的频道选取记录。")},
    {"Combo2", KELB_TEXT("要处理的另一个频道；只作提示，任务按各自的频道选取记录。")},
    {"Check1", KELB_TEXT("勾选后页面从下面的文件夹读取；不勾选时论坛任务找不到页面文件。")},
    {"Text1", KELB_TEXT("采集机上页面文件所在的文件夹；记录中的路径去掉盘符后接在它后面，可把文件夹拖到这里。")},
    {"Check2", KELB_TEXT("勾选后参数提取任务在当前页之后停止；再次运行前请取消勾选。")},
    {"Check3", KELB_TEXT("勾选后参数提取任务把新的型号加入 wxKnowledge 表；不勾选时只显示。")},
    {"ChkStopFor",
     KELB_TEXT("勾选后任务在当前行之后停止，已处理的行保留；再次运行前请取消勾选（运行中按 Esc 也可勾选）。")},
    {"Text2", KELB_TEXT("任务的日志；这里显示最新的约 2000 行，“日志另存为”保存全部。")},
    {"Text4", KELB_TEXT("备用文本框，没有任务读取它。")},
    {"Text5", KELB_TEXT("备用文本框，没有任务读取它。")},
    {"ActionSetup", KELB_TEXT("指定模板提取的源和目的，打开模板提取窗口。")},
    {"ActionViewer", KELB_TEXT("在浏览器窗口中查看保存的产品页面；不改变任何数据。")},
    {"ActionDryRun", KELB_TEXT("任务照常进行并报告，但不改变任何记录和文件。")},
    {"ActionTrash", KELB_TEXT("任务删除的页面文件移到所选文件夹，删除的记录也写在那里，可以恢复。")},
    {"ActionLogFile", KELB_TEXT("把每次任务的日志按时间顺序写入 UTF-8 文本文件。")},
    {"ActionProductRows", KELB_TEXT("勾选后参数提取按源数据库的记录读取页面；不勾选时遍历源数据库所在的文件夹。")},
    {"ActionSaveLog", KELB_TEXT("把本窗口的全部日志保存为 UTF-8 文本文件。")},
    {"ActionClearLog", KELB_TEXT("清空窗口里的日志；日志文件不变。")},
};

/// A job as its users see it: `summary` says in one sentence what it does and what it changes, `detail` is the help
/// page's.
struct JobText {
    const char* button;
    const char* name;
    const char* summary;
    const char* detail;
};
inline constexpr JobText kJobs[] = {
    {"Command1", KELB_TEXT("论坛导入"),
     KELB_TEXT(
         "把源库 bbsforum 表中论坛主题的首页提取成文章，加入目的库的 wxAll 表；提示信息页的记录和页面文件会被删除。"),
     KELB_TEXT("只处理导入频道中网址含“-1-”的主题首页，第 2、3 页接在正文后面。网址已在 wxAll 中的主题不再导入。"
               "必须勾选“如果是在…采集的内容”，否则没有页面文件可读。正文达到 12000 字的文章写入 TestRec 文件夹。")},
    {"Command15", KELB_TEXT("论坛填充"),
     KELB_TEXT(
         "从页面文件提取标题和正文，填入源库 bbsforum 表中填充频道各行的 sT、sC；提示信息页的记录和页面文件会被删除。"),
     KELB_TEXT("填好的 sT、sC 供以后的任务直接使用。需要勾选“如果是在…采集的内容”。")},
    {"Command12", KELB_TEXT("单页文章导入"),
     KELB_TEXT("按站点标记从源库的每一行提取一篇文章，加入目的表；达到 8000 字的文章改写入 TestRec 文件夹。"),
     KELB_TEXT(
         "源和目的在“窗口 → 参数设定”中指定；没有指定时取自 Source DB 和 Destination DB。站点在 Kelb.ini 的 [Articles] "
         "中设置。不属于任何站点的行沿用上一行的标题和正文。日志只显示最近的一篇文章。")},
    {"Command13", KELB_TEXT("多页文章导入"),
     KELB_TEXT(
         "把分成多页的文章合并后加入 SQL Server 的 wxPrinter 表，并清空源表首页行的 blnPass、sT、sC；每次最多 10 篇。"),
     KELB_TEXT(
         "服务器或数据库在 Kelb.ini 的 [SqlServer] 中设置，也可以是一个 .mdb 文件。源表缺少字段时只添加字段并结束，"
         "请再运行一次。合并的过程写入 TestRec 文件夹供检查。此任务不看“停止”框。")},
    {"Command11", KELB_TEXT("去除源表重复"),
     KELB_TEXT("比较源表中同一主题的页面，删除重复、打不开和没有页面文件的记录及其页面文件。"),
     KELB_TEXT("编号最大的记录优先保留；标题更长的较旧页面可以取代它。缺少页面文件的记录太多时先询问。"
               "建议先用“选项 → 试运行”查看结果，或设置回收文件夹。")},
    {"Command16", KELB_TEXT("去除目的表伪重复"),
     KELB_TEXT("wxGG 表中网址前缀相同的行只保留 recTime 最新的一行，其余删除；开始后不能停止。"),
     KELB_TEXT("前缀是网址到最后一个“-”为止的部分；不含“-”的网址视为同一前缀。")},
    {"Command10", KELB_TEXT("故障总结合并"),
     KELB_TEXT("把 wxtcl 表中型号相同的两条已审核记录合并成一条故障总结，并撤下被合并的那一条。"),
     KELB_TEXT("缺少 blnJoined 字段时先添加该字段，完成后程序关闭，请重新开始。此任务不看“停止”框。")},
    {"Command5", KELB_TEXT("产品参数导入"),
     KELB_TEXT("从产品参数页提取型号和十项参数；勾选“保存提取的TV参数”时把新型号加入 wxKnowledge 表。"),
     KELB_TEXT(
         "读取源数据库所在文件夹（或 Kelb.ini 的 [Params] shareFolder）中编号子文件夹 0、1、2… 里的页面，"
         "从上次停下的地方继续，不保存时位置也会前移；“选项”菜单可改为按源数据库的记录读取。已有的型号不会重复加入。"
         "结果存入 Kelb.ini 的 [SqlServer] 所指的数据库。用“停止提取”框停止。")},
    {"Command14", KELB_TEXT("参数提取（预留）"), KELB_TEXT("预留的按钮：什么都不做，也不改变任何数据。"),
     KELB_TEXT("没有任务。")},
    {"Command3", KELB_TEXT("用户名导出"),
     KELB_TEXT("把 DVUser 表前 300 行中以汉字开头的用户名写入 TestRec 文件夹的文件；不改变数据库。"),
     KELB_TEXT("得到的文件去掉第一行以后，可以用作程序文件夹中的 userNames.txt。")},
    {"Command4", KELB_TEXT("增加字段"),
     KELB_TEXT("给 wxhx 表增加 blnPass、blnPosted、sT、sC 四个字段；字段已存在时报错。"),
     KELB_TEXT("对同一个表只运行一次。")},
    {"Command7", KELB_TEXT("读取表格（预留）"), KELB_TEXT("预留的按钮：什么都不做，也不改变任何数据。"),
     KELB_TEXT("没有任务。")},
};

inline constexpr char kApplication[] = KELB_TEXT("网页内容提取");
inline constexpr char kTabJobs[] = KELB_TEXT("提取");
inline constexpr char kTabResults[] = KELB_TEXT("结果");
inline constexpr char kTabReasons[] = KELB_TEXT("统计");
inline constexpr char kTabSpare[] = KELB_TEXT("备用");

// The tab of results.
inline constexpr char kResultsDatabase[] = KELB_TEXT("数据库(&A)");
inline constexpr char kResultsDatabaseName[] = KELB_TEXT("结果数据库");
inline constexpr char kResultsDatabaseTip[] = KELB_TEXT("要查看的 Access 数据库；留空时用“提取”页的 Destination DB。");
inline constexpr char kResultsTable[] = KELB_TEXT("表(&Z)");
inline constexpr char kResultsTableTip[] = KELB_TEXT("要查看的表。");
inline constexpr char kResultsRefresh[] = KELB_TEXT("刷新 F5");
inline constexpr char kResultsRefreshTip[] = KELB_TEXT("重新读取表中的记录。");
inline constexpr char kResultsFilter[] = KELB_TEXT("筛选(&I)");
inline constexpr char kResultsFilterHint[] = KELB_TEXT("标题或网址中的文字 (Ctrl+F)");
inline constexpr char kResultsBodies[] = KELB_TEXT("也查正文");
inline constexpr char kResultsBodiesTip[] = KELB_TEXT("在正文里也查找；大的表要多花一些时间，窗口不会停顿。");
inline constexpr char kResultsList[] = KELB_TEXT("结果列表");
inline constexpr char kResultsListTip[] =
    KELB_TEXT("空格键切换所选各行的审核标记，回车键打开来源记录，单击标题、时间或网址的表头可排序。");
inline constexpr char kResultsPass[] = KELB_TEXT("通过(&Y)");
inline constexpr char kResultsPassTip[] = KELB_TEXT("把所选各行的 blnPass 设为真：可以发布。");
inline constexpr char kResultsFail[] = KELB_TEXT("不通过(&N)");
inline constexpr char kResultsFailTip[] = KELB_TEXT("把所选各行的 blnPass 设为假：不发布。");
inline constexpr char kResultsSourceRow[] = KELB_TEXT("来源记录(&M)");
inline constexpr char kResultsSourceRowTip[] = KELB_TEXT("显示这篇文章在源数据库中的记录；不改变任何数据。");
inline constexpr char kResultsViewer[] = KELB_TEXT("完整页面(&G)");
inline constexpr char kResultsViewerTip[] = KELB_TEXT("按下后来源页面由页面查看器显示，脚本、样式和图片照常起作用。");
inline constexpr ObjectText kResultsColumns[] = {
    {"pass", KELB_TEXT("通过")}, {"title", KELB_TEXT("标题")}, {"length", KELB_TEXT("字数")},
    {"time", KELB_TEXT("时间")}, {"url", KELB_TEXT("来源")},
};
inline constexpr char kResultsCount[] = KELB_TEXT("共 %1 行");
inline constexpr char kResultsMatches[] = KELB_TEXT("找到 %1 / %2 行");
inline constexpr char kResultsLooking[] = KELB_TEXT("找到 %1 行，已查 %2%");
inline constexpr char kResultsGone[] = KELB_TEXT("（此行已被删除，按 F5 刷新）");
inline constexpr char kResultsNoTable[] = KELB_TEXT("数据库中没有表：%1");
inline constexpr char kResultsCannotOpen[] = KELB_TEXT("无法显示：%1");
inline constexpr char kResultsMarked[] = KELB_TEXT("已标记 %1 行。");
inline constexpr char kResultsTooMany[] = KELB_TEXT("一次最多标记 %1 行。");
inline constexpr char kResultsTooManyToSort[] = KELB_TEXT("超过 %1 行的表不排序。");
inline constexpr char kResultsMoved[] = KELB_TEXT("字段已添加，但表中的记录已有变化：请重新选择要标记的行。");
inline constexpr char kResultsNothingChosen[] = KELB_TEXT("没有选中任何行。");
inline constexpr char kResultsDryRun[] = KELB_TEXT("“试运行”已打开，什么都不改变：没有标记。");
inline constexpr char kResultsAddPass[] =
    KELB_TEXT("表 %1 没有审核字段 blnPass。\n现在添加这个字段（是/否，现有各行都为否）并标记所选的行吗？");
inline constexpr char kResultsArticle[] = KELB_TEXT("文章（发布后的样子）");
inline constexpr char kResultsFieldsOnly[] = KELB_TEXT("记录的全部字段（此表没有正文）");
inline constexpr char kResultsChoose[] = KELB_TEXT("在上面的列表中选择一行。");
inline constexpr char kResultsCut[] = KELB_TEXT("（太长，只显示前 %1 个字符。）");
inline constexpr char kSourcePage[] = KELB_TEXT("来源页面");
inline constexpr char kSourcePageAt[] = KELB_TEXT("来源页面：%1");
inline constexpr char kSourcePageInRow[] = KELB_TEXT("来源页面：存于 %1 表的记录中");
inline constexpr char kSourceLooking[] = KELB_TEXT("正在查找来源页面…");
inline constexpr char kSourceNoUrl[] = KELB_TEXT("此行没有网址，找不到它的来源。");
inline constexpr char kSourceNotFound[] =
    KELB_TEXT("来源记录已不存在：%1\n中没有网址 %2。\n（源数据库在“提取”页的 Source DB 中指定。）");
inline constexpr char kSourceNoContent[] = KELB_TEXT("来源记录（%1 表）没有页面：content 为空。");
inline constexpr char kSourceFileGone[] =
    KELB_TEXT("页面文件已不存在（可能已被任务删除），找过：\n%1\n（页面文件夹在“提取”页指定。）");
inline constexpr char kSourceUnreadable[] = KELB_TEXT("页面文件无法读取：%1");
inline constexpr char kSourceNoDatabase[] = KELB_TEXT("无法查找来源：%1");
inline constexpr char kSourceRowTitle[] = KELB_TEXT("来源记录：%1 表");
inline constexpr char kSourceRowGone[] = KELB_TEXT("来源记录已不存在：%1\n中没有这条记录：%2");
inline constexpr char kSourceRowField[] = KELB_TEXT("字段");
inline constexpr char kSourceRowValue[] = KELB_TEXT("值");
inline constexpr char kSourceRowWhole[] = KELB_TEXT("所选字段的全部内容");

// The status line.
inline constexpr char kReady[] = KELB_TEXT("就绪");
inline constexpr char kJobRuns[] = KELB_TEXT("“%1”正在运行，请等它结束或勾选停止框。");
inline constexpr char kRunning[] = KELB_TEXT("正在运行：%1");
inline constexpr char kStopIsTicked[] = KELB_TEXT("停止框已勾选，任务没有处理任何行；请取消勾选后再运行。");
inline constexpr char kClosing[] = KELB_TEXT("任务在当前行之后停止，然后窗口关闭。");
inline constexpr char kFailed[] = KELB_TEXT("“%1”出错，已结束。");
inline constexpr char kRefused[] = KELB_TEXT("已取消，什么都没有改变。");
inline constexpr char kNotWritable[] = KELB_TEXT("程序文件夹不可写，过长的文章无法保存：%1");
inline constexpr char kLogSaved[] = KELB_TEXT("日志已保存：%1");
inline constexpr char kNotSaved[] = KELB_TEXT("无法写入 %1：%2");
inline constexpr char kDryRunOn[] = KELB_TEXT("试运行");
inline constexpr char kTrashOn[] = KELB_TEXT("回收：%1");
inline constexpr char kLogFileOn[] = KELB_TEXT("日志文件：%1");

// Progress and the finished job.
inline constexpr char kRowsPerSecond[] = KELB_TEXT("%1 行/秒");
inline constexpr char kTimeLeft[] = KELB_TEXT("剩余 %1");
inline constexpr char kHours[] = KELB_TEXT("%1 小时 %2 分");
inline constexpr char kMinutes[] = KELB_TEXT("%1 分 %2 秒");
inline constexpr char kSeconds[] = KELB_TEXT("%1 秒");
inline constexpr char kFateSaved[] = KELB_TEXT("保存");
inline constexpr char kFateSkipped[] = KELB_TEXT("跳过");
inline constexpr char kFateFailed[] = KELB_TEXT("失败");
inline constexpr char kNoRunYet[] = KELB_TEXT("任务结束后，这里按原因显示保存、跳过和失败的记录。");
inline constexpr char kRowsOf[] = KELB_TEXT("查看记录(&V)：");
inline constexpr char kRowsName[] = KELB_TEXT("记录");
inline constexpr char kRowsDetail[] = KELB_TEXT("说明");
inline constexpr char kRowHasNoPlace[] = KELB_TEXT("这条记录没有可以打开的来源。");
inline constexpr char kRowsMore[] = KELB_TEXT("只列出前 %1 条，另有 %2 条");
inline constexpr char kSummaryRows[] = KELB_TEXT("%1：共 %2 行");
inline constexpr char kSummarySaved[] = KELB_TEXT("保存 %1");
inline constexpr char kSummarySkipped[] = KELB_TEXT("跳过 %1");
inline constexpr char kSummaryFailed[] = KELB_TEXT("失败 %1");
inline constexpr char kSummaryDeletedRows[] = KELB_TEXT("删除记录 %1");
inline constexpr char kSummaryDeletedFiles[] = KELB_TEXT("删除文件 %1");
inline constexpr char kSummaryOverflow[] = KELB_TEXT("过长文章写入文件 %1");
inline constexpr char kSummaryReplaced[] = KELB_TEXT("写成“?”的字符 %1");
inline constexpr char kSummarySeconds[] = KELB_TEXT("用时 %1 秒");
inline constexpr char kSummaryStopped[] = KELB_TEXT("已按要求停止。");
inline constexpr char kInBrackets[] = KELB_TEXT("（%1）");
inline constexpr char kComma[] = KELB_TEXT("，");
inline constexpr char kFullStop[] = KELB_TEXT("。");

inline constexpr char kSummaryDryRun[] = KELB_TEXT("试运行，什么都没有改变。");

/// Names and notes that jobs put into their summaries.
inline constexpr ObjectText kSummaryWords[] = {
    {"alreadyThere", KELB_TEXT("已在目的表中")},
    {"noPageFile", KELB_TEXT("没有页面文件")},
    {"overLong", KELB_TEXT("过长")},
    {"noticePage", KELB_TEXT("提示信息页")},
    {"kept", KELB_TEXT("保留")},
    {"nullUrl", KELB_TEXT("网址为 Null")},
    {"blankUrl", KELB_TEXT("网址为空")},
    {"notAThreadPage", KELB_TEXT("网址不符合主题页格式")},
    {"routerPage", KELB_TEXT("路由器页面")},
    {"duplicate", KELB_TEXT("重复")},
    {"duplicateWithOtherTitle", KELB_TEXT("重复（标题不同）")},
    {"blockedTitle", KELB_TEXT("标题不合格")},
    {"noPartner", KELB_TEXT("没有型号相同的另一条")},
    {"withdrawn", KELB_TEXT("已被合并撤下")},
    {"noName", KELB_TEXT("没有名字")},
    {"singleByteName", KELB_TEXT("不以汉字开头")},
    {"tooShort", KELB_TEXT("内容过少")},
    {"warmUp", KELB_TEXT("预处理（以后再处理）")},
    {"startsAgain", KELB_TEXT("预处理结束，从头开始")},
    {"endOfFolder", KELB_TEXT("子文件夹已读完")},
    {"noParameterTable", KELB_TEXT("页面上没有参数表")},
    {"nameAlreadyStored", KELB_TEXT("该名称已保存过")},
    {"savingIsOff", KELB_TEXT("没有选择保存")},
    {"emptyPage", KELB_TEXT("没有页面文件，或文件为空")},
    {"noFloors", KELB_TEXT("页面上没有楼层")},
    {"tooFewFloors", KELB_TEXT("楼层不足三层")},
    {"firstPostRejected", KELB_TEXT("楼主的帖子为空或无价值")},
    {"noTitle", KELB_TEXT("未找到标题")},
    {"noBody", KELB_TEXT("未找到正文")},
    {"noTitleNorBody", KELB_TEXT("标题和正文都未找到")},
    {"numberTaken", KELB_TEXT("编号已被另一条记录使用")},
    {"noTable", KELB_TEXT("原来的表已不存在")},
    {"refused", KELB_TEXT("数据库不接受该记录")},
    {"nothing in the trash is left to be put back", KELB_TEXT("回收文件夹中没有可恢复的内容。")},
    {"no table is named: nothing was merged", KELB_TEXT("没有填写表名，什么都没有合并。")},
    {"no row of the source is a parameter page of the portal", KELB_TEXT("源表中没有该门户的参数页。")},
    {"the walk over the folder has come to its end: begin anew with kelb counter reset",
     KELB_TEXT("文件夹已遍历完；要从头开始，请先运行 kelb counter reset。")},
    {"fewer than 106 pages with 100 characters or more: nothing can be saved",
     KELB_TEXT("内容达到 100 字的页面不足 106 个，什么都不能保存。")},
    {"only the first 300 rows were read", KELB_TEXT("只读取了前 300 行。")},
    {"LAN mode is off: nothing can be imported",
     KELB_TEXT("没有勾选“如果是在…采集的内容”，读不到页面文件，所以什么都没有导入。")},
    {"LAN mode is off: nothing can be filled",
     KELB_TEXT("没有勾选“如果是在…采集的内容”，读不到页面文件，所以什么都没有填充。")},
    {"no row of the source is a first thread page of the channel", KELB_TEXT("源表中没有该频道的主题首页。")},
    {"the source table has no rows", KELB_TEXT("源表中没有记录。")},
    {"no row of the source is the first page of an article of the site", KELB_TEXT("源表中没有该站点文章的首页。")},
    {"fields were added to the source table: start the job again", KELB_TEXT("已给源表添加字段，请重新开始。")},
    {"no row of the source is a thread page of the channel", KELB_TEXT("源表中没有该频道的主题页面。")},
};

// Boxes.
inline constexpr char kErrorTitle[] = KELB_TEXT("任务出错");
inline constexpr char kConfirmTitle[] = KELB_TEXT("请确认");
inline constexpr char kErrorEntry[] = KELB_TEXT("出错: ");
inline constexpr char kFileNotFound[] = KELB_TEXT("文件未找到");
inline constexpr char kCannotStart[] = KELB_TEXT("无法启动");
inline constexpr char kNoDisplay[] = KELB_TEXT("没有可用的显示器：请在图形桌面中启动，或使用命令行程序 kelb。");
inline constexpr char kYes[] = KELB_TEXT("继续");
inline constexpr char kNo[] = KELB_TEXT("取消");
inline constexpr char kOk[] = KELB_TEXT("确定");
inline constexpr char kLongText[] = KELB_TEXT("%1…\n\n（文字较长，全文见下面的按钮。）");

// Help.
inline constexpr char kJobsPageTitle[] = KELB_TEXT("各项任务说明");
inline constexpr char kJobsPageIntroduction[] = KELB_TEXT(
    "每个按钮启动一项任务，任务逐行处理到底；勾选“停止”后，任务在当前行之后结束。任务进行时其他按钮不起作用。");
inline constexpr char kAboutTitle[] = KELB_TEXT("关于");
inline constexpr char kAbout[] =
    KELB_TEXT("网页内容提取 KelbExtractor %1\n\n把采集到的网页变成干净的文章：论坛主题、文章页面、产品参数。\n"
              "程序文件夹：%2\n设置文件：%3");

// The page viewer.
inline constexpr char kViewerTitle[] = KELB_TEXT("页面查看器");
inline constexpr char kViewerOpen[] = KELB_TEXT("打开保存的页面");
inline constexpr char kViewerInspect[] = KELB_TEXT("查看产品信息");
inline constexpr char kViewerOpenTip[] = KELB_TEXT("打开 Kelb.ini 的 [Viewer] 中设置的保存的页面；不改变任何数据。");
inline constexpr char kViewerInspectTip[] = KELB_TEXT("显示页面中 div 元素的个数和产品信息块的文字；不改变任何数据。");
inline constexpr char kViewerCount[] = KELB_TEXT("div 元素的个数");
inline constexpr char kViewerBlock[] = KELB_TEXT("产品信息");
inline constexpr char kViewerNoPage[] = KELB_TEXT("没有设置要查看的页面：请在 Kelb.ini 的 [Viewer] 中设置 page。");
inline constexpr char kViewerNotFound[] = KELB_TEXT("找不到页面文件：%1");
inline constexpr char kViewerLoading[] = KELB_TEXT("正在打开…");
inline constexpr char kViewerFailed[] = KELB_TEXT("无法打开：%1");
inline constexpr char kViewerMissing[] =
    KELB_TEXT("页面查看器不可用：此程序编译时没有 Qt WebEngine（Debian 软件包 qt6-webengine-dev）。");

// The template workflow: set-up dialog and extractor.
inline constexpr char kPreview[] = KELB_TEXT("源表的前几行");
inline constexpr char kPreviewFailed[] = KELB_TEXT("无法预览：%1");
inline constexpr char kNextTip[] = KELB_TEXT("打开源表和目的表（没有目的表时先建立它），然后打开模板提取窗口。");
inline constexpr char kQueryTip[] = KELB_TEXT("只作显示：总是打开整个源表。");
inline constexpr char kTypeTip[] = KELB_TEXT("只作显示：总是作为 Access 数据库打开。");
inline constexpr char kExtractorDryRun[] = KELB_TEXT("%1（试运行：什么都不保存）");
inline constexpr char kTabResult[] = KELB_TEXT("提取结果");
inline constexpr char kTabModel[] = KELB_TEXT("模版");
inline constexpr char kContinuousTip[] =
    KELB_TEXT("从当前行起逐行提取，把文章加入目的表；每次最多走与源表行数相同的步数。");
inline constexpr char kNextPageTip[] = KELB_TEXT("处理当前行，然后移到下一行；学习阶段之后文章加入目的表。");
inline constexpr char kBackTip[] = KELB_TEXT("退回两行，使上一行可以再处理；不改变任何数据。");
inline constexpr char kOpenResultTip[] = KELB_TEXT("用系统关联的程序打开目的数据库文件。");
inline constexpr char kInterruptTip[] = KELB_TEXT("勾选后在当前行之后中断。");
inline constexpr char kSlowTip[] = KELB_TEXT("勾选后“连续提取”由定时器推动，每次最多保存一篇长文章。");
inline constexpr char kSetupTip[] = KELB_TEXT("重新指定源和目的；本窗口随之关闭。");
inline constexpr char kCloseTip[] = KELB_TEXT("关闭本窗口；学到的内容不保留。");
inline constexpr char kSetupButton[] = KELB_TEXT("参数设定…");
inline constexpr char kCloseButton[] = KELB_TEXT("关闭");
inline constexpr char kLearning[] = KELB_TEXT("学习阶段：还需 %1 篇 100 字以上的文章；不足 106 篇时什么都不会保存。");
inline constexpr char kSaving[] = KELB_TEXT("保存阶段：文章加入目的表。");
inline constexpr char kExtractorCounts[] = KELB_TEXT("共 %1 行，已走 %2 行，保存 %3，过短 %4，过长 %5");
inline constexpr char kModelHits[] = KELB_TEXT("与模版相符的片段：%1 / %2（正向 %3，反向 %4）");
inline constexpr char kBrowse[] = KELB_TEXT("浏览…");
inline constexpr char kJobRunsElsewhere[] = KELB_TEXT("主窗口的任务正在运行，请等它结束。");
inline constexpr char kExtractorBusy[] = KELB_TEXT("正在提取，请等它结束或勾选“中断”。");
inline constexpr char kAtEnd[] = KELB_TEXT("已到源表末尾。");
inline constexpr char kExtractorRuns[] = KELB_TEXT("模板提取正在运行，请等它结束或勾选它的“中断”。");
inline constexpr char kNothingOpens[] = KELB_TEXT("没有程序可以打开这个文件：%1");

// The command line.
inline constexpr char kUsage[] = KELB_TEXT(
    "用法：KelbExtractor [选项]\n"
    "  --home 文件夹        程序文件夹（userNames.txt、ADMarks.txt、TestRec）；默认 KELB_HOME，再默认程序所在处\n"
    "  --ini 文件           设置文件；默认程序文件夹中的 Kelb.ini\n"
    "  --view 文件          直接在页面查看器中打开一个保存的页面\n"
    "  --quit-after-paint   显示窗口后立即退出（检查安装）\n"
    "  --version, --help    版本，本说明\n");
inline constexpr char kBadArgument[] = KELB_TEXT("无法理解的参数：%1（见 --help）");

// Choosers.
inline constexpr char kChooseSource[] = KELB_TEXT("选择源数据库");
inline constexpr char kChooseDestination[] = KELB_TEXT("选择目的数据库");
inline constexpr char kChooseFolder[] = KELB_TEXT("选择页面文件夹");
inline constexpr char kChooseTrash[] = KELB_TEXT("选择回收文件夹");
inline constexpr char kChooseLogFile[] = KELB_TEXT("选择日志文件");
inline constexpr char kChooseSaveLog[] = KELB_TEXT("日志另存为");
inline constexpr char kDatabaseFilter[] = KELB_TEXT("Access 数据库 (*.mdb *.MDB);;所有文件 (*)");
inline constexpr char kTextFilter[] = KELB_TEXT("文本文件 (*.txt);;所有文件 (*)");

} // namespace kelb::app::texts
