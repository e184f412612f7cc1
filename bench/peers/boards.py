"""Pages of four board programs, written out by hand from how such pages are built.

discuz_x2, discuz_x3, discuz_7 have the marks that `kelb forum-import` looks for; tables_board is another make, for which the
program has no rules of its own.
"""

from thread import BANNER, FRAME, SILENT

import markup
import texts


def advert(rng, thread):
    return thread.say(BANNER, texts.draw(rng, texts.BANNER, thread.used))


def head(rng, thread, generator, suffix):
    return (f'<!DOCTYPE html PUBLIC "-//W3C//DTD XHTML 1.0 Transitional//EN" '
            f'"http://www.w3.org/TR/xhtml1/DTD/xhtml1-transitional.dtd">\n<html xmlns="http://www.w3.org/1999/xhtml">\n<head>\n'
            f'<meta http-equiv="Content-Type" content="text/html; charset=gbk" />\n'
            f"<title>{thread.title} - {thread.board} -  家电维修论坛 -  {suffix}</title>\n"
            f'<meta name="keywords" content="{thread.board}" />\n'
            f'<meta name="description" content="{thread.posts[0].lines[0][0]} 家电维修论坛" />\n'
            f'<meta name="generator" content="{generator}" />\n'
            f'<link rel="stylesheet" type="text/css" href="data/cache/style_1_common.css" />\n'
            f"{markup.styles(rng, 25)}{markup.scripts(rng, 8)}</head>\n")


def breadcrumbs(thread):
    return thread.say(FRAME, f"论坛 › 家电维修 › {thread.board} › 查看内容 {thread.number}").replace("›", "&rsaquo;")


def powered(rng, thread):
    return thread.say(FRAME, f"GMT+8, {texts.moment(rng)} , Processed in 0.{rng.randrange(10000, 99999)} second(s), 8 queries")


# ---- Discuz! X2 and X3


def x_author(post):
    return (f'<td class="pls" rowspan="2">\n<div id="favatar{post.number}" class="pls favatar">\n'
            f'<div class="pi"><div class="authi"><a href="space-uid-{post.number % 7919}.html" target="_blank" class="xw1">'
            f"{post.author}</a></div></div>\n"
            f'<div class="p_pop blk bui" id="userinfo{post.number}" style="display: none; margin-top: -11px;">\n'
            f'<div class="m z"><div id="userinfo{post.number}_ma"></div></div>\n<div class="i y"><div>\n'
            f'<strong><a href="space-uid-{post.number % 7919}.html" target="_blank" class="xi2">{post.author}</a></strong>\n'
            f"<em>当前离线</em>\n</div><dl class=\"cl\"><dt>积分</dt><dd><a href=\"home.php?mod=space&amp;do=profile\" "
            f'class="xi2">查看</a></dd></dl><div class="imicn">\n'
            f'<a href="javascript:;" onclick="showWindow(\'qq\', this.href)" title="QQ"><img src="images/qq.gif" alt="QQ" /></a>\n'
            f'<a href="home.php?mod=space&amp;do=profile" target="_blank" title="查看详细资料"><img src="images/home.gif" '
            f'alt="查看详细资料" /></a>\n</div>\n<div id="avatarfeed"><span id="threadsortswait"></span></div>\n</div>\n</div>\n'
            f'<div><div class="avatar" onmouseover="showauthor(this, \'userinfo{post.number}\')"><a '
            f'href="space-uid-{post.number % 7919}.html" target="_blank"><img src="uc/avatar.php?size=middle" alt="" /></a></div>\n'
            f'<p><em><a href="home.php?mod=spacecp&amp;ac=usergroup&amp;gid=10" target="_blank">注册会员</a></em></p></div>\n'
            f'<p><span><img src="images/star_level2.gif" alt="Rank: 2" /></span></p>\n')


def x_panel(thread, post):
    return (f'<dl class="pil cl"><dt>资料</dt><dd>{thread.say(FRAME, post.panel)}</dd></dl>\n'
            f'<ul class="xl xl2 o cl">\n<li class="pm2"><a href="home.php?mod=spacecp&amp;ac=pm&amp;op=showmsg" '
            f'onclick="showWindow(\'sendpm\', this.href);" title="发消息" class="xi2">发消息</a></li>\n</ul>\n</div>\n</td>\n')


def x_head_of_message(thread, post):
    """The edit notice and what the post answers, inside the message as the board prints them."""
    out = f'<i class="pstatus"> {markup.edit_notice(thread, post)} </i><br />\n<br />\n' if post.edited else ""
    if post.answers and post.quotes:
        out += (f'<div class="quote"><blockquote><font size="2"><a href="forum.php?mod=redirect&amp;goto=findpost&amp;pid='
                f'{post.answers.number}" target="_blank"><font color="#999999">{markup.quoted_head(thread, post)}'
                f"</font></a></font><br />\n{markup.excerpt(post.answers)}</blockquote></div><br />\n")
    elif post.answers:
        reference = thread.say(FRAME, f"回复 {post.answers.number % 89}# {post.answers.author} 的帖子")
        number = f"{post.answers.number % 89}#"
        linked = reference.replace(number, f'<a href="forum.php?goto=findpost" target="_blank">{number}</a>')
        out += f"<strong>{linked}</strong><br />\n<br />\n"
    return out


def x_picture(rng, thread, post):
    label = thread.say(FRAME, f"IMG_{post.number}.jpg ({rng.randrange(20, 400)}.{rng.randrange(10, 99)} KB, 下载次数: {post.number % 50})")
    return (f'<br />\n<ignore_js_op>\n<img id="aimg_{post.number}" aid="{post.number}" src="static/image/common/none.gif" '
            f'zoomfile="data/attachment/forum/{post.number}.jpg" class="zoom" width="600" alt="IMG_{post.number}.jpg" />\n'
            f'<div class="tip tip_4 aimg_tip" id="aimg_{post.number}_menu" style="position: absolute; display: none">\n'
            f'<div class="tip_c xs0"><div class="y">{texts.moment(rng)} 上传</div>\n<p>{label}</p>\n'
            f'<a href="forum.php?mod=attachment" target="_blank">下载附件</a></div><div class="tip_horn"></div></div>\n'
            f"</ignore_js_op>\n")


def x_post(rng, thread, post, floor, with_noise):
    cell = ""
    if post.kind == SILENT and post.number % 2:
        cell = '<div class="locked">提示: <em>作者被禁止或删除 内容自动屏蔽</em></div>'
    else:
        text = (x_head_of_message(thread, post)
                + markup.message_lines(rng, thread, post, '<font class="jammer">{}</font>', with_noise)
                + (x_picture(rng, thread, post) if post.picture else ""))
        cell = (f'<div class="t_fsz"><table cellspacing="0" cellpadding="0"><tr><td class="t_f" id="postmessage_{post.number}">\n'
                f"{text}</td></tr></table>\n</div>")
    side = f'<div class="a_pr"><a href="http://ad.example.com/r">{advert(rng, thread)}</a></div>\n' if floor % 5 == 0 else ""
    below = f'<div class="a_pb"><a href="http://ad.example.com/b">{advert(rng, thread)}</a></div>\n' if floor % 4 == 1 else ""
    sign = (f'<div class="sign" style="max-height:100px;maxHeightIE:100px;">{thread.say(FRAME, post.signature)}</div>\n'
            if post.signature else "")
    return (f'<div id="post_{post.number}"><table id="pid{post.number}" summary="pid{post.number}" cellspacing="0" '
            f'cellpadding="0">\n<tr>\n{x_author(post)}{x_panel(thread, post)}<td class="plc">\n<div class="pi">\n'
            f'<strong><a href="thread-{thread.number}-1-1.html#pid{post.number}" id="postnum{post.number}" '
            f'onclick="setCopy(this.href, \'帖子地址复制成功\');return false;"><em>{floor + 1}</em><sup>#</sup></a></strong>\n'
            f'<div class="pti">\n<div class="pdbt"></div>\n<div class="authi">\n<img class="authicn vm" '
            f'id="authicon{post.number}" src="images/online_member.gif" alt="" />\n<em id="authorposton{post.number}">'
            f'发表于 {post.when}</em>\n<span class="pipe">|</span><a href="forum.php?mod=viewthread&amp;authorid='
            f'{post.number % 7919}" rel="nofollow">只看该作者</a>\n</div>\n</div>\n</div><div class="pct">{side}<div class="pcb">\n'
            f'{cell}\n<div id="comment_{post.number}" class="cm"></div>\n<div id="post_rate_div_{post.number}"></div>\n'
            f'</div></div>\n</td></tr>\n<tr><td class="plc plm">\n{sign}{below}</td></tr>\n<tr><td class="pls"></td>\n'
            f'<td class="plc" style="overflow:visible;"><div class="po hin"><div class="pob cl"><em>\n<a class="fastre" '
            f'href="forum.php?mod=post&amp;action=reply" onclick="showWindow(\'reply\', this.href)">回复</a>\n</em>\n<p>'
            f'<a href="javascript:;" class="showmenu" onmouseover="showMenu(this.id)">使用道具</a><a href="javascript:;" '
            f'onclick="showWindow(\'miscreport\', \'misc.php?mod=report\')">举报</a></p></div></div></td></tr>\n'
            f'<tr class="ad"><td class="pls"></td><td class="plc"></td></tr>\n</table>\n</div>\n')


def x_page(rng, thread, heading, generator, with_noise):
    posts = "".join(x_post(rng, thread, post, floor, with_noise) for floor, post in enumerate(thread.posts))
    return (f'{head(rng, thread, generator, "Powered by Discuz!")}<body id="nv_forum" class="pg_viewthread">\n'
            f'<div id="append_parent"></div><div id="ajaxwaitid"></div>\n<div id="toptb" class="cl"><div class="wp"><div class="z">'
            f'<a href="javascript:;" onclick="setHomepage(\'http://bbs.example.net/\');">设为首页</a><a href="http://bbs.example.net/" '
            f'onclick="addFavorite(this.href);return false;">收藏本站</a></div></div></div>\n<div id="hd"><div class="wp"><h2>'
            f'<a href="./" title="家电维修论坛"><img src="images/logo.gif" alt="家电维修论坛" border="0" /></a></h2>\n'
            f'<div class="a_h"><a href="http://ad.example.com/h">{advert(rng, thread)}</a></div>\n<div id="nv"><ul>'
            f'{markup.link_list(rng, "forum", 12)}</ul></div></div></div>\n<div id="wp" class="wp">\n<div id="pt" class="bm cl">'
            f'<div class="z">{breadcrumbs(thread)}</div></div>\n<div class="wp a_t"><table><tr>'
            f'<td>{advert(rng, thread)}</td><td>{advert(rng, thread)}</td></tr></table></div>\n<div id="ct" class="wp cl">\n'
            f'<div id="pgt" class="pgs mbm cl"><a id="newspecial" onmouseover="showMenu(\'newspecial\')" href="javascript:;">'
            f'<img src="images/pn_post.png" alt="发新帖" /></a></div>\n<div id="postlist" class="pl bm">\n'
            f'<table cellspacing="0" cellpadding="0"><tr><td class="pls ptm pbm"><div class="hm"><span class="xg1">查看:</span> '
            f'<span class="xi1">{rng.randrange(100, 9000)}</span></div></td>\n<td class="plc ptm pbm vwthd">\n{heading}\n</td></tr>'
            f'</table>\n{posts}<div id="postlistreply" class="pl"><div id="post_new" class="viewthread_table" '
            f'style="display: none"></div></div>\n</div>\n<div id="diyfastposttop" class="area"></div>\n<form id="fastpostform" '
            f'action="forum.php?mod=post"><textarea rows="6" cols="80" name="message" id="fastpostmessage"></textarea></form>\n'
            f'</div></div>\n<div id="ft" class="wp cl"><p>Powered by <strong>Discuz!</strong></p><p class="xs0">'
            f'{powered(rng, thread)}</p></div>\n{markup.scripts(rng, 12)}</body>\n</html>\n')


def discuz_x2(rng, thread):
    heading = (f'<h1 class="ts">\n<a href="forum.php?mod=forumdisplay&amp;filter=typeid">[{thread.board}]</a>\n'
               f'<a href="thread-{thread.number}-1-1.html" id="thread_subject">{thread.title}</a>\n</h1>')
    return x_page(rng, thread, heading, "Discuz! X2", rng.random() < 0.5)


def discuz_x3(rng, thread):
    kind = f'<a href="forum.php?mod=forumdisplay&amp;filter=typeid">[{thread.board}]</a>\n' if rng.random() < 0.7 else ""
    heading = f'<h1 class="ts">\n{kind}<span id="thread_subject">{thread.title}</span>\n</h1>'
    return x_page(rng, thread, heading, "Discuz! X3.2", rng.random() < 0.5).replace("\r\n", "\n")


# ---- Discuz! 7


def seven_post(rng, thread, post, floor, with_noise):
    heading, text = "", ""
    if floor == 0:
        heading = (f'<div id="threadtitle">\n<h1><a href="forum-2-1.html">[{thread.board}]</a> {thread.title}</h1>\n</div>\n')
    if post.edited:
        text += f"<i> {markup.edit_notice(thread, post)} </i><br /><br />"
    if post.answers and post.quotes:
        other = post.answers
        source = thread.say(FRAME, f"原帖由 {other.author} 于 {other.when} 发表").replace(other.author, f"<i>{other.author}</i>")
        text += (f'<div class="quote"><blockquote>{source} <a href="redirect.php?goto=findpost" target="_blank"><img '
                 f'src="images/common/back.gif" border="0" alt="" /></a><br />\r\n{markup.excerpt(other)}</blockquote></div><br />')
    elif post.answers:
        number = f"{post.answers.number % 89}#"
        reference = thread.say(FRAME, f"回复 {number} {post.answers.author} 的帖子")
        text += f'<b>{reference.replace(number, f"""<a href="redirect.php" target="_blank">{number}</a>""")}</b><br /><br />'
    text += markup.message_lines(rng, thread, post, '<font style="font-size:0px;color:#FFF">{}</font>', with_noise)
    attached = ""
    if post.picture:
        hint = thread.say(FRAME, f"附件 {post.number}: 您需要登录才可以下载或查看附件。没有帐号？注册")
        attached = f'<div class="notice" style="width: 500px"><span>{hint}</span></div>\n'
    between = f'<div class="ad_pip" id="ad_thread1_{floor}">{advert(rng, thread)}</div>\n' if floor % 4 == 2 else ""
    textlink = f'<div class="ad_textlink2" id="ad_thread2_{floor}">{advert(rng, thread)}</div>\n' if floor % 5 == 0 else ""
    sign = (f'<div class="signatures" style="maxHeightIE:100px">{thread.say(FRAME, post.signature)}</div>\n'
            if post.signature else "")
    return (f'<div id="post_{post.number}"><table id="pid{post.number}" summary="pid{post.number}" cellspacing="0" '
            f'cellpadding="0">\n<tr>\n<td class="postauthor" rowspan="2">\n<div class="popupmenu_popup userinfopanel" '
            f'id="userinfo{post.number}" style="display: none; position: absolute;margin-top: -11px;">\n<div class="popavatar">'
            f'<div id="userinfo{post.number}_ma"></div></div>\n<div class="popuserinfo">\n<p><a href="space.php?uid='
            f'{post.number % 7919}" target="_blank">{post.author}</a><em>当前离线</em></p>\n<p><a href="my.php?item=buddylist" '
            f'target="_blank">加为好友</a> <a href="pm.php?action=new" target="_blank">发短消息</a></p></div></div>\n'
            f'<div class="postinfo"><a target="_blank" href="space.php?uid={post.number % 7919}" style="margin-left: 20px; '
            f'font-weight: 800">{post.author}</a></div>\n<div><div class="avatar"><img src="uc/avatar.php?size=middle" '
            f'alt="" /></div><p><em>中级会员</em></p>\n<p>{thread.say(FRAME, post.panel)}</p></div>\n</td>\n'
            f'<td class="postcontent">\n<div id="threadstamp"></div><div class="postinfo"><strong><a id="postnum{post.number}" '
            f'href="viewthread.php" onclick="setcopy(this.href)">{floor + 1}<sup>#</sup></a></strong>\n<div class="posterinfo">'
            f'<div class="authorinfo"><em id="authorposton{post.number}">发表于 {post.when}</em> | <a href="viewthread.php" '
            f'rel="nofollow">只看该作者</a></div></div>\n</div>\n<div class="defaultpost">\n{textlink}<div class="postmessage'
            f'{" firstpost" if floor == 0 else ""}">\n{heading}{between}<div class="t_msgfontfix">\n<table cellspacing="0" '
            f'cellpadding="0"><tr><td class="t_msgfont" id="postmessage_{post.number}">{text}</td></tr></table>\n</div>\n'
            f'{attached}</div>\n<div id="post_rate_div_{post.number}"></div>\n</div>\n</td></tr>\n<tr><td class="postcontent '
            f'postbottom">\n{sign}</td></tr>\n<tr><td class="postauthor"></td><td class="postcontent"><div class="postactions">'
            f'<div class="postact s_clear"><em><a class="fastreply" href="post.php?action=reply">回复</a> <a class="repquote" '
            f'href="post.php?action=reply&amp;repquote={post.number}">引用</a></em><p><a href="javascript:;" '
            f'onclick="scrollTo(0,0);">TOP</a></p></div></div></td></tr>\n<tr class="threadad"><td class="postauthor"></td>'
            f'<td class="adcontent"></td></tr>\n</table>\n</div>\n')


def discuz_7(rng, thread):
    with_noise = rng.random() < 0.5
    posts = "".join(seven_post(rng, thread, post, floor, with_noise) for floor, post in enumerate(thread.posts))
    return (f'{head(rng, thread, "Discuz! 7.2", "Powered by Discuz! Board")}<body id="viewthread">\n<div id="append_parent"></div>\n'
            f'<div id="header"><div class="wrap s_clear"><h2><a href="index.php" title="家电维修论坛"><img src="images/logo.gif" '
            f'alt="" /></a></h2><div id="ad_headerbanner">{advert(rng, thread)}</div>\n<div id="menu"><ul>'
            f'{markup.link_list(rng, "forum", 12)}</ul></div></div></div>\n<div id="nav">{breadcrumbs(thread)}</div>\n'
            f'<div id="ad_text"><table><tr><td>{advert(rng, thread)}</td><td>{advert(rng, thread)}</td></tr></table></div>\n'
            f'<div id="wrap" class="wrap s_clear threadfix">\n<div class="forumcontrol"><span>查看 {rng.randrange(100, 9000)}</span>'
            f'</div>\n<div id="postlist" class="mainbox viewthread">\n{posts}</div>\n<div id="postlistreply" class="mainbox '
            f'viewthread"><div id="post_new" class="viewthread_table" style="display: none"></div></div>\n<form id="fastpostform">'
            f'<textarea rows="6" cols="80" name="message"></textarea></form>\n<select onchange="location=this.value"><option>版块跳转'
            f'</option></select>\n</div>\n<div id="footer"><p>Powered by <strong>Discuz!</strong> 7.2</p><p class="smalltext">'
            f'{powered(rng, thread)}</p></div>\n{markup.scripts(rng, 14)}</body></html>\n')


# ---- another make


def tables_post(rng, thread, post, floor, with_noise):
    text = ""
    if post.answers and post.quotes:
        text += f'<blockquote class="blockquote">引用：{markup.quoted_head(thread, post)}<br />{markup.excerpt(post.answers)}</blockquote>'
    text += markup.message_lines(rng, thread, post, '<span class="hid">{}</span>', with_noise)
    if post.edited:
        text += f'<div class="edited">[ {markup.edit_notice(thread, post)} ]</div>'
    sign = f'<div class="signature">{thread.say(FRAME, post.signature)}</div>' if post.signature else ""
    between = f'<div class="tipad">{advert(rng, thread)}</div>' if floor % 4 == 1 else ""
    heading = f'<h1 id="subject_tpc">{thread.title}</h1>' if floor == 0 else ""
    return (f'<a name="{post.number}"></a><div class="t5"><table width="100%" cellspacing="0" cellpadding="0">\n<tr class="tr1">\n'
            f'<th class="r_two" rowspan="2"><b>{post.author}</b><br /><img src="images/face/none.gif" alt="" /><br />级别: 新手上路'
            f'<br />{thread.say(FRAME, post.panel)}<br /></th>\n<th class="r_one" id="td_{post.number}"><div class="tiptop">'
            f'<a class="s3">{floor + 1}楼</a> 发表于: {post.when} <a href="read.php?uid={post.number % 7919}">只看该作者</a></div>\n'
            f'{heading}<div class="tpc_content"><div class="f14" id="read_{post.number}">{text}</div></div>\n{sign}</th></tr>\n'
            f'<tr><th class="r_one">{between}<div class="tipad"><a href="post.php?action=quote">引用</a> <a '
            f'href="post.php?action=modify">编辑</a> <a href="job.php?action=report">举报</a></div></th></tr></table></div>\n')


def tables_board(rng, thread):
    with_noise = rng.random() < 0.5
    posts = "".join(tables_post(rng, thread, post, floor, with_noise) for floor, post in enumerate(thread.posts))
    return (f'{head(rng, thread, "Board 5.3", "家电维修论坛")}<body>\n<div id="header"><div id="head"><a href="index.php">'
            f'<img src="images/logo.png" alt="" /></a><div class="banner">{advert(rng, thread)}</div></div><ul id="guide">'
            f'{markup.link_list(rng, "thread-htm-fid", 12)}</ul></div>\n<div id="main">\n<div id="breadCrumb">{breadcrumbs(thread)}'
            f'</div>\n<div class="t"><table><tr><td>{advert(rng, thread)}</td><td>{advert(rng, thread)}</td></tr></table></div>\n'
            f'{posts}<form action="post.php"><textarea name="atc_content" rows="8"></textarea></form>\n</div>\n<div id="footer">'
            f'{powered(rng, thread)}</div>\n{markup.scripts(rng, 14)}</body></html>\n')


DISCUZ = {"x2": discuz_x2, "x3": discuz_x3, "d7": discuz_7}
OTHER = {"tables": tables_board}
