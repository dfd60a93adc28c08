"""Values of every kind that documents were seen or said to hold, each made anew by a function, and
documents that hold one in every place."""
import struct

from archives import (Conditional, Date, Instance, MUTABLE_ARRAY, MUTABLE_DATA,
                      MUTABLE_DICTIONARY, MUTABLE_STRING, NIL,
                      Single, Value, Wide, array, attributed, dictionary, mutable_data,
                      mutable_string, node, numbers, ref)

MUTABLE_SET = ('NSMutableSet', 'NSSet', 'NSObject')
MUTABLE_ATTRIBUTED = ('NSMutableAttributedString', 'NSAttributedString', 'NSObject')
TEXT_STORAGE = ('NSTextStorage', 'NSMutableAttributedString', 'NSAttributedString', 'NSObject')


def font(name='Helvetica', size=12.0, flags=16, **more):
    return Instance('NSFont', {'NSName': ref(name), 'NSSize': size, 'NSfFlags': flags, **more})


def rgb(text, space=1, **more):
    return Instance('NSColor', {'NSColorSpace': space, 'NSRGB': text.encode() + b'\0', **more})


def white(text, space=3, **more):
    return Instance('NSColor', {'NSColorSpace': space, 'NSWhite': text.encode() + b'\0', **more})


def colour_space(**fields):
    return Instance('NSColorSpace', fields)


def paragraph_style(tabs=None, chain='NSParagraphStyle', **fields):
    return Instance(chain, {'NSTabStops': NIL if tabs is None else array(tabs), **fields})


def mutable_paragraph_style(tabs=None, **fields):
    return paragraph_style(tabs, ('NSMutableParagraphStyle', 'NSParagraphStyle', 'NSObject'),
                           **fields)


def tab(location, **fields):
    return Instance('NSTextTab', {'NSLocation': location, **fields})


def text_blocks():
    """Two cells of one table, which stays one."""
    table = Instance(('NSTextTable', 'NSTextBlock', 'NSObject'),
                     {'NSNumCols': 2, 'NSTableFlags': 1})
    border = array([rgb('1 0 0'), Instance('NSNull')] * 2)
    cells = [Instance(('NSTextTableBlock', 'NSTextBlock', 'NSObject'),
                      {'NSTable': table, 'NSRowNum': 0, 'NSRowSpan': 1, 'NSColNum': column,
                       'NSColSpan': 1, 'NSParam0': 50.0, 'NSValueTypes': -2147483647,
                       'NSBackgroundColor': white('0.5'), 'NSBorderColors': border})
             for column in range(2)]
    return [mutable_paragraph_style(NSTextBlocks=array([cell])) for cell in cells]


def circle():
    """Objects that hold each other, through a dictionary too."""
    first, second = Instance('ZZPeer', {'name': ref('first')}), Instance('ZZPeer')
    first.fields['peers'] = array([first, second])
    second.fields.update(name=ref('second'), back=first,
                         known=dictionary({'me': second, 'you': first}))
    return first


def conditional():
    """References back, ahead, and to what is nowhere else."""
    gone, ahead = Instance('ZZGone'), Instance('ZZView', {'name': ref('ahead')})
    owner = Instance('ZZView', {'delegate': Conditional(gone), 'next': Conditional(ahead),
                                'source': Conditional(gone), 'nothing': NIL})
    owner.fields['views'] = array([Instance('ZZView', {'superview': Conditional(owner),
                                                       'delegate': Conditional(gone)}), ahead])
    return owner


def shared_inside():
    style, name = Instance('ZZStyle', {'width': Single(0.1)}), mutable_string('shared')
    return array([style, name, dictionary({'style': style, 'name': name}), style])


def inline():
    """Everything that may stand in a record itself."""
    return Instance('ZZEverything', {
        'true': True, 'false': False, 'zero': 0, 'one': 1, 'byte': 255, 'word': 65535,
        'long': 4294967295, 'longer': 4294967296, 'negative': -1, 'flags': -2147483392,
        'least': -2 ** 63, 'most': 2 ** 63 - 1, 'wide': Wide(2 ** 64 - 1), 'wider': Wide(5),
        'widest': Wide(2 ** 100), 'single': Single(0.1), 'double': 0.1, 'whole': 1000.0,
        'wholeSingle': Single(1000.0), 'infinite': float('inf'), 'minusZero': -0.0,
        'largest': 1.7976931348623157e+308, 'nan': float('nan'), 'text': 'x' * 20, 'empty': '',
        'wideText': 'größe', 'emptyData': b'', 'data': bytes(range(20)), 'date': Date(1.5),
        'references': [ref('a'), NIL, ref(1)], 'nothing': [], 'mixed': [1, 'x', [True], {'a': 1}],
        'map': {'k': ref('v'), 'deeper': {'x': [ref(1.5)]}}, '$0': 7, '$1': ref('unkeyed'),
        '$$own': ref('key of its own'), 'größe': 1})


def unkeyed_value():
    return Instance('NSValue', {'$0': ref('[3i]'), '$1': Instance(
        '_NSKeyedCoderOldStyleArray',
        {'NS.count': 3, 'NS.size': 4, 'NS.type': 105, '$0': 1, '$1': 2, '$2': -3})})


def rich_runs(chain='NSAttributedString'):
    bold, plain = {'NSFont': font('Helvetica-Bold')}, dictionary({'NSFont': font()})
    text = 'bold plain and \U0001F33F again bold'
    bold = dictionary(bold)
    units = len(text.encode('utf-16-be')) // 2
    mutable = chain != 'NSAttributedString'
    more = {'NSDelegate': NIL} if chain == TEXT_STORAGE else {}
    return attributed(mutable_string(text) if mutable else text, (4, bold), (units - 8, plain),
                      (4, bold), chain=chain, **more)


def long_runs():
    looks = [dictionary({'ZZLook': n}) for n in range(200)]
    return attributed('x' * 60000, *[(300, look) for look in looks])


def every_attribute():
    shadow = Instance('NSShadow', {'NSShadowBlurRadius': Single(8), 'NSShadowVert': Single(-8),
                                   'NSShadowHoriz': Single(1), 'NSShadowColor': white('0 0.5')})
    wrapper = Instance('NSFileWrapper', {'NSFileWrapperData': b'rtfd\0\0\0\0' * 30})
    first, second = text_blocks()
    return attributed(
        'every \ufffc look',
        (6, {'NSFont': font(), 'NSOriginalFont': font('Times-Roman'), 'NSColor': rgb('0.1 0.2 0.3'),
             'NSParagraphStyle': first, 'NSUnderline': 1, 'NSLigature': 0, 'NSKern': 1.5,
             'NSBackgroundColor': white('1'), 'NSUnderlineColor': rgb('1 0 0'),
             'NSStrikethroughColor': rgb('0 1 0'), 'NSStrokeColor': rgb('0 0 1'),
             'NSStrikethrough': 1, 'NSSuperScript': -1, 'NSWritingDirection': [2],
             'NSCharacterShape': 1, 'NSSpellingState': 1, 'NSStrokeWidth': -3.0,
             'NSBaselineOffset': Single(2), 'NSObliqueness': 0.2, 'NSExpansion': 0.1,
             'NSShadow': shadow, 'NSToolTip': 'tip', 'NSCursor': Instance('NSCursor', {'t': 1}),
             'NSLink': url('http://example.com/'), 'NSMarkedClauseSegment': 0}),
        (1, {'NSAttachment': Instance('NSTextAttachment', {'NSFileWrapper': wrapper, 'NSCell': NIL}),
             'NSParagraphStyle': second}),
        (5, {'NSLink': 'http://example.org', 'ZZOwn': circle(), 'ZZSame': shadow}))


def url(text, base=NIL):
    return Instance('NSURL', {'NS.base': base, 'NS.relative': ref(text)})


def decimal():
    return Instance(('NSDecimalNumberPlaceholder', 'NSDecimalNumber', 'NSNumber', 'NSValue',
                     'NSObject'),
                    {'NS.mantissa': bytes(16), 'NS.mantissa.bo': 1, 'NS.length': 0,
                     'NS.exponent': -2, 'NS.negative': True, 'NS.compact': True})


def dates():
    return array([
        Instance('NSDate', {'NS.time': 599616000.125}),
        Instance(('NSCalendarDate', 'NSDate', 'NSObject'),
                 {'NS.time': -1.0, 'NS.format': ref('%Y'),
                  'NS.timezone': Instance('NSTimeZone', {'NS.name': ref('Europe/Berlin'),
                                                         'NS.data': mutable_data(b'TZif')})}),
        Instance(('NSDate', '%NSDate', 'NSObject'), {'NS.time': 2.0}),
        Instance('NSDate', {'NS.time': Single(2.0)}), Instance('NSDate', {'NS.time': 3}),
        Instance('NSDate', {'NS.time': 4.0, 'more': 1})])


def bare_dates():
    """Dates of the property list itself, as other archivers write them."""
    date = Value(Date(1.5))
    return array([date, date, Value(Date(1.5)), Value(Date(-599616000.25)), {'in': Value(Date(0))}])


def containers():
    return array([[], {}, array([], MUTABLE_ARRAY), dictionary({}, MUTABLE_DICTIONARY), [[], [[]]],
                  {'': 'empty key', 'größe': 1}, [None, 1, None], {'nothing': None},
                  Instance(('NSArray', '%NSArray', 'NSObject'), {'NS.objects': [ref(1)]}),
                  Instance('NSDictionary', {'NS.objects': [ref(1)], 'NS.keys': [ref('turned')]}),
                  Instance('NSArray', {}), Instance('NSArray', {'NS.objects': [], 'more': 1}),
                  Instance(MUTABLE_ARRAY, {'NS.objects': [ref(1)]}, has_chain=False)])


def odd_keys():
    """Keys of every kind, and one key twice."""
    return dictionary([(1, 'one'), (1.0, 'real'), (True, 'true'), (b'k', 'data'),
                       (mutable_string('k'), 'mutable'), (dates(), 'array'),
                       (Instance('ZZKey'), 'object'), ('twice', 1), ('twice', 2),
                       ('$class', 'own'), ('NS.keys', 'own')])


def old_forms():
    return array([
        Instance('NSDictionary', {'NS.key.0': ref('k'), 'NS.object.0': ref('v'),
                                  'NS.key.1': ref('l'), 'NS.object.1': ref(['w'])}),
        Instance(MUTABLE_ARRAY, {'NS.object.0': ref('a'), 'NS.object.1': ref(['b'])}),
        Instance('NSSet', {'NS.object.0': ref('a')}),
        Instance('NSOrderedSet', {'NS.object.0': ref('z'), 'NS.object.1': ref('a')})])


def old_strings_and_data():
    return array([
        Instance('NSString', {'NS.string': 'in a record'}),
        Instance(MUTABLE_STRING,
                 {'NS.bytes': 'größe'.encode()}),
        Instance('NSString', {'NS.bytes': b'plain'}),
        Instance('NSData', {'NS.bytes': b'bytes'}), Instance('NSData', {'NS.data': b'data'}),
        Instance(MUTABLE_DATA, {'NS.data': ref(b'referred to')}),
        Instance(MUTABLE_STRING, {'NS.string': 'more', 'x': 1}),
        Instance(('NSMutableString', '%NSMutableString', 'NSString', 'NSObject'),
                 {'NS.string': 'chain'})])


def sets():
    return array([
        Instance('NSSet', {'NS.objects': [ref(1), ref('a')]}), Instance('NSSet', {'NS.objects': []}),
        Instance(MUTABLE_SET, {'NS.objects': [ref(['x']), ref({'k': 'v'})]}),
        Instance(('NSMutableOrderedSet', 'NSOrderedSet', 'NSObject'), {'NS.object.0': ref('z')}),
        Instance(('NSCountedSet',) + MUTABLE_SET,
                 {'NS.count': 2, 'NS.object0': ref('a'), 'NS.count0': 3, 'NS.object1': ref(1),
                  'NS.count1': 1}),
        Instance('NSIndexSet', {'NSRangeCount': 0}),
        Instance('NSIndexSet', {'NSRangeCount': 1, 'NSLocation': 3, 'NSLength': 4}),
        Instance(('NSMutableIndexSet', 'NSIndexSet', 'NSObject'),
                 {'NSRangeCount': 2, 'NSRangeData': mutable_data(numbers(1, 2, 2 ** 63 - 51, 50))}),
        Instance('NSIndexPath', {'NSIndexPathLength': 2, 'NSIndexPathData': mutable_data(b'\1\2')})])


def structures():
    return array([
        Instance('NSValue', {'NS.special': 1, 'NS.pointval': ref('{1, 2}')}),
        Instance('NSValue', {'NS.special': 2, 'NS.sizeval': ref('{640, 480}')}),
        Instance('NSValue', {'NS.special': 3, 'NS.rectval': ref('{{1, 2}, {3.5, 1.79769e+308}}')}),
        Instance('NSValue', {'NS.special': 4, 'NS.rangeval.location': ref(3),
                             'NS.rangeval.length': ref(2 ** 63 - 1)}),
        Instance('NSValue', {'NS.special': 12, 'NS.edgeval.top': 1.0, 'NS.edgeval.left': 2.0,
                             'NS.edgeval.bottom': 3.0, 'NS.edgeval.right': -4.5}),
        unkeyed_value(), decimal()])


def objects():
    return array([
        Instance(('NSNull', '%NSNull', 'NSObject')), Instance('NSNull'),
        Instance('NSUUID', {'NS.uuidbytes': bytes(range(16))}), url('page', url('http://a.example/')),
        Instance('NSLocale', {'NS.identifier': ref('de_DE')}),
        Instance('NSTimeZone', {'NS.name': ref('GMT'), 'NS.data': NIL}),
        Instance(('NSMutableCharacterSet', 'NSCharacterSet', 'NSObject'), {'NSString': 'abc'}),
        Instance('NSAffineTransform', {'NSTransformStruct': struct.pack('>6f', 1, 0, 0, 1, 5, 6)}),
        Instance('NSNotification', {'NS.name': ref('n'), 'NS.object': ref(1), 'NS.userinfo': NIL}),
        Instance('NSFontDescriptor', {'NSFontDescriptorAttributes': dictionary(
            {'NSFontNameAttribute': 'Helvetica', 'NSFontSizeAttribute': 12.0},
            MUTABLE_DICTIONARY)})])


def fonts():
    return array([font(size=Single(13)), font('.AppleSystemUIFont', 13.0, 1044),
                  font(mutable_string('Menlo-Regular')), font(flags=0, NSMatrix=bytes(24))])


def colours():
    profile = mutable_data(b'profile' * 30)
    space = colour_space(NSID=7, NSICC=profile)
    return array([
        rgb('0.33333299 0 1'), rgb('0.1 0.2 0.3 0.4', 2), white('7.043773371e-05'),
        white('0.5 0.25', 4), Instance('NSColor', {'NSColorSpace': 5, 'NSCMYK': b'0 0 0 1\0'}),
        Instance('NSColor', {'NSColorSpace': 6, 'NSCatalogName': ref('System'),
                             'NSColorName': ref('controlTextColor'), 'NSColor': white('0')}),
        Instance('NSColor', {'NSColorSpace': 10, 'NSImage': Instance('NSImage', {'NSReps': NIL})}),
        rgb('0 0 1', NSComponents=b'0 0 0.99 1', NSCustomColorSpace=space),
        white('0.6', NSComponents=b'0.66 1', NSCustomColorSpace=colour_space(
            NSID=9, NSModel=0, NSICC=ref(b'gray' * 20))),
        white('0.6', NSCustomColorSpace=colour_space(NSSpaceID=12, NSICC=profile)),
        Instance('UIColor', {'UIWhite': Single(0.5), 'UIAlpha': Single(1),
                             'UIColorComponentCount': 2, 'NSWhite': b'0.5'}, hints=['NSColor'])])


def paragraph_styles():
    lists = array([Instance('NSTextList', {'NSMarkerFormat': ref('{disc}')}),
                   Instance('NSTextList', {'NSMarkerFormat': ref('{decimal}.'), 'NSOptions': 1,
                                           'NSStart': 3, 'NSMarkerTextAttachment': NIL})])
    return array([
        paragraph_style(), paragraph_style([]), paragraph_style([tab(11.0), tab(36.5,
                                                                            NSTextAlignment=4)]),
        mutable_paragraph_style(
            [tab(1.0, NSTabOptions=dictionary({}))], NSAlignment=4, NSDefaultTabInterval=36.0,
            NSWritingDirection=1, NSHeadIndent=12.0, NSParagraphSpacing=Single(3),
            NSMinLineHeight=14.0, NSMaxLineHeight=28.0, NSLineBreakMode=2, NSTextLists=lists,
            NSTextBlocks=array([]), NSTighteningFactorForTruncation=0.05000000074505806,
            NSFirstLineHeadIndent=1.0, NSTailIndent=-10.0, NSLineSpacing=1.5,
            NSParagraphSpacingBefore=3.0, NSLineHeightMultiple=1.2, NSHyphenationFactor=0.5,
            NSHeaderLevel=2.0, NSAllowsTighteningForTruncation=1, NSLineBreakStrategy=1,
            NSTextHorizontalAlignment=4, NSUsesDefaultHyphenation=True, NSFullyJustified=False),
        *text_blocks()])


def classes():
    return array([
        Instance('ZZEmpty'), Instance('ZZModule.Name', {'a': 1}),
        Instance(('ZZPlain', '%ZZPlain', 'ZZBase', 'NSProxy'), {'a': 1}),
        Instance('ZZHinted', {'a': 1}, hints=['NSString', 'NSArray']),
        Instance('ZZBare', {'a': 1}, has_chain=False), Instance('ZZBare', {'b': 1}),
        Instance('größe', {'a': 1})])


def circle_of_containers():
    inner = dictionary({}, MUTABLE_DICTIONARY)
    outer = array([inner, 'x'], MUTABLE_ARRAY)
    inner.fields['NS.keys'].append(ref('outer'))
    inner.fields['NS.objects'].append(outer)
    outer.fields['NS.objects'].append(outer)
    return outer


def null_texts():
    """Texts with the marker of null, where they are repaired and where they are not."""
    return array(['x $null y', '\\$null', 'größe $null', mutable_string('a $null'),
                  {'$null key': ['$nullvalue']}, Instance('ZZHolder', {
                      'text': ref('not $null here'), 'inside': '$null', 'list': ref(['no $null'])}),
                  attributed('rich $null', {'ZZ $null': 'no $null'}),
                  Instance('NSSet', {'NS.objects': [ref('set $null')]})])


KINDS = {
    'text': lambda: ref('text'), 'empty text': lambda: ref(''), 'wide text': lambda: ref('größe'),
    'long text': lambda: ref('long ' * 300), 'emoji': lambda: ref('\U0001F33F\u0301\u200b'),
    'unpaired surrogates': lambda: array(['a\ud800b\udc00', mutable_string('\udfff')]),
    'mutable text': lambda: mutable_string('text'), 'mutable data': lambda: mutable_data(b'x'),
    'date': lambda: Instance('NSDate', {'NS.time': 599616000.125}),
    'mutable null text': lambda: mutable_string('$null'),
    'text of an old form': lambda: Instance(MUTABLE_STRING, {'NS.bytes': b'old'}),
    'text with more fields': lambda: Instance(MUTABLE_STRING, {'a': 1, 'NS.string': '$null', 'x': 1}),
    'null text': null_texts,
    'booleans': lambda: array([True, False, 1, 0, 1.0, 0.0, Value(Single(1))]),
    'integers': lambda: array([0, 1, 127, 128, 255, 256, 32768, 65535, 65536, 2 ** 31, 2 ** 32 - 1,
                               2 ** 32, 2 ** 63 - 1, -1, -128, -129, -2 ** 31, -2 ** 63]),
    'wide integers': lambda: array([Value(Wide(n)) for n in (0, 5, 2 ** 63, 2 ** 64 - 1, 2 ** 100)]),
    'reals': lambda: array([0.0, -0.0, 1.5, 0.1, 5e-324, 1e300, float('inf'), float('-inf'),
                            float('nan')]),
    'singles': lambda: array([Value(Single(x)) for x in (0.0, -0.0, 0.1, 1e30, float('nan'))]),
    'data': lambda: array([b'', b'x', b'long' * 200, mutable_data(b'x'), mutable_data(b'')]),
    'dates': dates, 'bare date': lambda: Value(Date(-1.5)), 'bare dates': bare_dates,
    'containers': containers, 'dictionary keys': odd_keys, 'old forms': old_forms,
    'strings and data in records': old_strings_and_data, 'sets': sets, 'structures': structures,
    'platform objects': objects, 'fonts': fonts, 'colours': colours,
    'paragraph styles': paragraph_styles, 'classes': classes, 'inline values': inline,
    'circle': circle, 'conditional references': conditional, 'shared inside': shared_inside,
    'circle of containers': circle_of_containers,
    'rich text': lambda: attributed('plain', {'NSFont': font()}),
    'rich text without attributes': lambda: attributed('none', {}),
    'rich text of an old form': lambda: attributed(Instance(MUTABLE_STRING, {
        'NS.bytes': 'größe $null'.encode()}), (3, {'NSFont': font()}), (8, {})),
    'empty rich text': lambda: attributed(''), 'runs': rich_runs, 'long runs': long_runs,
    'mutable rich text': lambda: rich_runs(MUTABLE_ATTRIBUTED),
    'text storage': lambda: rich_runs(TEXT_STORAGE), 'every attribute': every_attribute,
}


def properties(keywords, *pairs):
    values = [('title', 'Title'), ('keywords', keywords), *pairs, ('comment', 'Last')]
    return dictionary([each for each in values if each[1] is not None])


def placed(make, keywords=('old',)):
    """A root item with a kind of value in every place, shared and each for itself."""
    shared = make()
    root = {'documentProperties': properties(list(keywords), ('extra', make()), ('shared', shared)),
            'windowFrame': '{{0, 0}, {1, 1}}', 'here': make(), 'same': shared}
    first = node({'title': 'plain', 'value': shared, 'list': [1, make(), 'x'],
                  'nested': {'a': [{'b': make()}]},
                  'repaired': array(['$null', dictionary({'v': make()}, MUTABLE_DICTIONARY)],
                                    MUTABLE_ARRAY)})
    second = node({'title': attributed('rich', {'NSFont': font(), 'ZZValue': shared}),
                   'holder': Instance('ZZHolder', {'held': make(), 'same': shared})})
    return node(root, [first, node({'again': shared}, [second])])
