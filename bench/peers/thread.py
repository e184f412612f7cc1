"""A thread as its posters see it, without mark-up."""

from dataclasses import dataclass, field

import texts

FIRST, REPLY, THANKS, ADVERT, BANNER = "first", "reply", "thanks", "advert", "banner"
EDIT, NOISE, FRAME = "edit", "noise", "frame"
CATEGORIES = [FIRST, REPLY, THANKS, ADVERT, BANNER, EDIT, NOISE, FRAME]
SILENT = "silent"  # a post of a smiley only, or one that the moderators have hidden


@dataclass
class Post:
    number: int
    author: str
    when: str
    kind: str
    lines: list = field(default_factory=list)  # of sentences
    edited: str = ""
    answers: "Post | None" = None
    quotes: bool = False  # the text of the answered post, not only its number
    picture: bool = False
    signature: str = ""
    panel: str = ""


@dataclass
class Thread:
    number: int
    board: str
    title: str
    posts: list
    truth: dict = field(default_factory=lambda: {category: [] for category in CATEGORIES})
    used: set = field(default_factory=set)

    def say(self, category, text):
        """The text, noted as one that the page shows."""
        self.truth[category].append(text)
        return text


def sentences_in_lines(rng, sentences):
    lines = []
    while sentences:
        count = min(len(sentences), rng.choice((1, 1, 2, 3)))
        lines.append(sentences[:count])
        sentences = sentences[count:]
    return lines


def thanks_in_order(rng):
    """Each thanks once, none a part of one that came before or the other way round."""
    taken = []
    for text in rng.sample(texts.THANKS, len(texts.THANKS)):
        if not any(text in other or other in text for other in taken):
            taken.append(text)
            yield text


def fill_post(rng, thread, post, thanks):
    if post.kind == FIRST:
        wanted = [texts.draw(rng, texts.CASE, thread.used) for _ in range(rng.randrange(4, 13))]
        post.lines = sentences_in_lines(rng, [thread.say(FIRST, text) for text in wanted])
    elif post.kind == REPLY:
        patterns = texts.MISLEADING if rng.random() < 0.02 else texts.ANSWER
        wanted = [texts.draw(rng, patterns, thread.used) for _ in range(rng.choice((1, 1, 1, 2, 2, 3, 5)))]
        post.lines = sentences_in_lines(rng, [thread.say(REPLY, text) for text in wanted])
    elif post.kind == THANKS:
        post.lines = [[thread.say(THANKS, next(thanks))]]
    elif post.kind == ADVERT:
        post.lines = [[thread.say(ADVERT, texts.draw(rng, texts.SPAM, thread.used))]]


def make_thread(rng, number, floors):
    """A thread of one page with the thread starter's post and answers of every kind."""
    thread = Thread(number, rng.choice(texts.BOARDS), texts.fill(rng, rng.choice(texts.TITLE)), [])
    thanks = thanks_in_order(rng)
    people = rng.sample(texts.NAMES, rng.randrange(6, 14))
    signatures = {name: texts.draw(rng, texts.SIGNATURE, thread.used) for name in people if rng.random() < 0.4}
    post_id = rng.randrange(1000, 900000)
    for floor in range(floors):
        kind = FIRST if floor == 0 else rng.choices((REPLY, THANKS, ADVERT, SILENT), (60, 25, 9, 6))[0]
        post = Post(post_id, people[0] if floor == 0 else rng.choice(people), texts.moment(rng), kind)
        post_id += rng.randrange(1, 60)
        fill_post(rng, thread, post, thanks)
        if kind in (FIRST, REPLY) and rng.random() < 0.2:
            post.edited = texts.moment(rng)
        earlier = [other for other in thread.posts if other.kind in (FIRST, REPLY)]
        if kind == REPLY and earlier and rng.random() < 0.3:
            post.answers, post.quotes = rng.choice(earlier), rng.random() < 0.5
        post.picture = kind in (FIRST, REPLY) and rng.random() < 0.12
        # Boards show a signature below every post of its owner; here below the first only, so that it can be counted.
        post.signature = signatures.pop(post.author, "")
        post.panel = f"{rng.randrange(1000, 999999)} 积分，注册于 {texts.moment(rng)[:10].rstrip()}"
        thread.posts.append(post)
    return thread
