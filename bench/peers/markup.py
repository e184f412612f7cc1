"""Pieces of mark-up that several board programs share: messages, noise, scripts, link lists."""

from thread import EDIT, FRAME, NOISE

import texts


def jammer(rng):
    """Random characters in pairs, as boards mix them into the line breaks of posts against copying."""
    return "".join(chr(rng.randrange(32, 60)) + " " + chr(rng.randrange(63, 127)) for _ in range(rng.randrange(6, 13)))


def noise(rng, thread, hidden):
    """One half of the noise is hidden by display:none, the other as the board program has it."""
    text = thread.say(NOISE, jammer(rng))
    if rng.random() < 0.5:
        return f"{hidden.format(text)}\r\n"
    return f'\r\n<span style="display:none">{text}</span>'


def emphasised(rng, sentence):
    """Some sentences have a word in bold or colour, or one that the board turns into a link."""
    if len(sentence) < 8 or rng.random() > 0.15:
        return sentence
    start = rng.randrange(0, len(sentence) - 3)
    word = sentence[start:start + 3]
    mark = rng.choice(("<strong>{}</strong>", '<font color="Red">{}</font>', '<font size="3">{}</font>',
                       '<a href="http://www.bbs.example.net/tag.html" target="_blank" class="relatedlink">{}</a>'))
    return sentence[:start] + mark.format(word) + sentence[start + 3:]


def message_lines(rng, thread, post, hidden, with_noise):
    """The post's lines with their breaks, and noise in some of the breaks."""
    out = []
    for number, line in enumerate(post.lines):
        if number > 0:
            out.append("<br />")
            out.append(noise(rng, thread, hidden) if with_noise and rng.random() < 0.7 else "\r\n")
        out.append("".join(emphasised(rng, sentence) for sentence in line))
    if not post.lines:
        out.append('<img src="images/smilies/default/victory.gif" smilieid="14" border="0" alt="" />')
    return "".join(out)


def excerpt(post):
    return post.lines[0][0][:12] + " ..."


def edit_notice(thread, post):
    return thread.say(EDIT, f"本帖最后由 {post.author} 于 {post.edited} 编辑")


def quoted_head(thread, post):
    other = post.answers
    return thread.say(FRAME, f"{other.author} 发表于 {other.when}")


def link_list(rng, prefix, count):
    return "\n".join(f'<li><a href="{prefix}-{number}-1.html" title="{board}" hidefocus="true">{board}</a></li>'
                     for number, board in enumerate(rng.sample(texts.BOARDS, count), 36))


def scripts(rng, count):
    """Inline scripts of the size that board pages have."""
    body = "\n".join(
        f"function initWidget{number}(node, options) {{\n  options = options || {{delay: {rng.randrange(50, 900)}, "
        f"cookie: 'w{rng.randrange(1000, 9999)}_'}};\n  if (!node || node.getAttribute('initialized')) return;\n"
        f"  node.onmouseover = function () {{ showMenu({{ctrlid: node.id, pos: '{rng.randrange(10, 99)}', "
        f"duration: {rng.randrange(1, 9)}}}); }};\n  node.setAttribute('initialized', '{number}');\n}}"
        for number in range(count))
    return f'<script type="text/javascript">\n{body}\n</script>\n'


def styles(rng, count):
    rules = "\n".join(f".cl{number} {{ float: left; margin: {rng.randrange(0, 20)}px {rng.randrange(0, 20)}px; "
                      f"color: #{rng.randrange(0x100000, 0xFFFFFF):x}; background: url(images/b{number}.gif) no-repeat; }}"
                      for number in range(count))
    return f'<style type="text/css">\n{rules}\n</style>\n'
